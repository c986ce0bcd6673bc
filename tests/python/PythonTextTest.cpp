// What the bridge does without an interpreter; runs on platforms that have none, too.

#include <veltor/err/Exceptions.h>
#include <veltor/python/PythonBridge.h>

#include "python/WideText.h"
#include "support/Printers.h"

#include <QtCore/QTimer>

#include <gtest/gtest.h>

namespace veltor::test {

class LayerWatch : public QTimer
{
    Q_OBJECT
};

} // namespace veltor::test

namespace veltor::python {
namespace {

TEST(WideText, joinsPairsAndKeepsLoneSurrogates)
{
    const QString text = QString::fromUtf8("\U0001F600a") + QChar(0xD83D) + QString::fromUtf8("\U0001F600");
    const std::wstring expected = L"\U0001F600a" + std::wstring(1, wchar_t(0xD83D)) + L"\U0001F600";
    EXPECT_EQ(toWideText(text), expected);
    EXPECT_EQ(toWideText(QString(QChar(0xD83D))).size(), 1U);
}

TEST(PythonText, literalIsRawAndTripleQuoted)
{
    EXPECT_EQ(makePythonStringLiteral(QString()), QStringLiteral("r\"\"\"\"\"\""));
    EXPECT_EQ(makePythonStringLiteral(QStringLiteral("C:\\new\n")), QStringLiteral("r\"\"\"C:\\new\n\"\"\""));
}

TEST(PythonText, hierarchyNamesClassesWithoutTheirNamespaces)
{
    const test::LayerWatch object;
    EXPECT_EQ(getHierarchy(&object), QStringList({QStringLiteral("LayerWatch"), QStringLiteral("QTimer"),
                                                  QStringLiteral("QObject")}));
    EXPECT_EQ(getHierarchy(nullptr), QStringList());
}

#ifdef VELTOR_HAS_PYTHON
TEST(WithoutAnInterpreter, asksForOne)
{
    EXPECT_THROW(currentError(), err::CouldNotInitializeObject);
    EXPECT_THROW(static_cast<void>(findExceptionType(nullptr)), err::CouldNotInitializeObject);
    EXPECT_THROW(static_cast<void>(QStringToPyString(QString())), err::CouldNotInitializeObject);
    EXPECT_THROW(Concurrent([] { FAIL(); }, nullptr), err::CouldNotInitializeObject);
}
#endif

} // namespace
} // namespace veltor::python

#include "PythonTextTest.moc"
