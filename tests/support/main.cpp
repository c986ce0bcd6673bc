// Entry point shared by the test programs: an event loop's owner first, then a role or GoogleTest.

#include "Process.h"

#include <QCoreApplication>

#include <gmock/gmock.h>

int main(int argc, char** argv)
{
    testing::InitGoogleMock(&argc, argv);
    const QCoreApplication application(argc, argv);
    const int played = veltor::test::playedRole();
    return played >= 0 ? played : RUN_ALL_TESTS();
}
