// What the bridge does without an interpreter; runs on platforms that have none, too.

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
    const ushort units[] = {0xDC00, 0xD83D, 0xDE00, 0x41, 0xD83D, 0xD83D, 0xDE00, 0, 0xD83D};
    const QString text = QString::fromUtf16(units, std::size(units));
    const std::wstring expected =
        sizeof(wchar_t) == 2
            ? std::wstring(std::begin(units), std::end(units))
            : std::wstring{wchar_t(0xDC00), wchar_t(0x1F600), L'A', wchar_t(0xD83D), wchar_t(0x1F600),
                           L'\0',           wchar_t(0xD83D)};
    EXPECT_EQ(toWideText(text), expected);
    EXPECT_EQ(toWideText(QString()), std::wstring());
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

} // namespace
} // namespace veltor::python

#include "PythonTextTest.moc"
