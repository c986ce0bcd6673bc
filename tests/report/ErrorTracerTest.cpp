// Collected errors.

#include "support/Printers.h"
#include "support/Text.h"

#include <veltor/err/ConcurrentNestedException.h>
#include <veltor/err/ErrorTracer.h>

#include <QtCore/QBuffer>
#include <QtCore/QJsonArray>
#include <QtCore/QJsonDocument>
#include <QtCore/QJsonObject>
#include <QtCore/QXmlStreamReader>

#include <gtest/gtest.h>

#include <algorithm>
#include <array>
#include <random>
#include <thread>

namespace veltor::test {
namespace {

using err::ErrorSeverity;
using err::ErrorSource;
using err::ErrorTracer;

QString randomText(std::mt19937& random)
{
    static const QString pieces[] = {
        u("a"),  u("<b>&\"'"),           u("</li>"), u("я"),  u("\xF0\x9F\x97\xBA"),
        u("\n"), QString(QChar(0xD83D)), u("\x1B["), u("%1"), u("\xE2\x80\xAE")};
    QString text = u("t");
    while (random() % 3 != 0) {
        text += pieces[random() % std::size(pieces)];
    }
    return text;
}

QString lineOf(const ErrorTracer::Entry& entry)
{
    QStringList words{QString::number(int(entry.severity)), entry.text, QString::number(entry.count),
                      QString::number(entry.moreSources)};
    for (const ErrorSource& source : entry.sources) {
        words << source.text();
    }
    return (words + entry.causes).join(u("|"));
}

/// What should be told of all errors, each an entry with one source: the entries, then how many are in none.
QStringList linesOf(const std::vector<ErrorTracer::Entry>& all, const ErrorTracer::Limits& limits)
{
    std::vector<ErrorTracer::Entry> entries;
    std::array<int, 4> kinds{};
    std::array<int, 4> notKept{};
    for (const ErrorTracer::Entry& added : all) {
        auto entry = std::find_if(entries.begin(), entries.end(), [&](const ErrorTracer::Entry& e) {
            return e.severity == added.severity && e.text == added.text && e.causes == added.causes;
        });
        if (entry == entries.end()) {
            if (kinds[std::size_t(added.severity)]++ >= limits.kinds) {
                ++notKept[std::size_t(added.severity)];
                continue;
            }
            entry = entries.insert(entry, {added.severity, added.text, added.causes, 0, {}, 0});
        }
        ++entry->count;
        if (!added.sources[0].text().isEmpty()) {
            entry->sources.size() < std::size_t(limits.sources) ? entry->sources.push_back(added.sources[0])
                                                                : void(++entry->moreSources);
        }
    }
    QStringList lines;
    std::transform(entries.begin(), entries.end(), std::back_inserter(lines), &lineOf);
    for (const int count : notKept) {
        lines << QString::number(count);
    }
    return lines;
}

QStringList linesOf(const ErrorTracer& errors)
{
    QStringList lines;
    const auto entries = errors.entries();
    std::transform(entries.begin(), entries.end(), std::back_inserter(lines), &lineOf);
    for (int i = 0; i < 4; ++i) {
        lines << QString::number(errors.notKept(ErrorSeverity(i)));
    }
    return lines;
}

/// The page is well-formed however the texts look, and has an item for each entry, cause and source.
void expectPage(const ErrorTracer& errors)
{
    const QString page = errors.toHtml();
    QXmlStreamReader body(page.section(u("<body>"), 1).section(u("</body>"), 0, 0).prepend(u("<body>")) +
                          u("</body>"));
    int items = 0;
    while (!body.atEnd()) {
        items += body.readNext() == QXmlStreamReader::StartElement && body.name() == u("li") ? 1 : 0;
    }
    EXPECT_FALSE(body.hasError()) << body.errorString().toStdString() << page.toStdString();
    std::size_t expected = 0;
    for (const ErrorTracer::Entry& entry : errors.entries()) {
        expected +=
            1 + std::size_t(entry.causes.size()) + entry.sources.size() + (entry.moreSources > 0 ? 1 : 0);
    }
    for (int i = 0; i < 4; ++i) {
        expected += errors.notKept(ErrorSeverity(i)) > 0 ? 1 : 0;
    }
    EXPECT_EQ(std::size_t(items), expected);
    const QString text = errors.toText();
    for (const QChar unit : page + text) {
        EXPECT_TRUE(unit.unicode() >= 0x20 || unit == QLatin1Char('\n')) << unit.unicode();
        EXPECT_NE(unit.unicode(), 0x202E);
    }
}

TEST(ErrorTracer, KeepsWhatAListOfAllWouldTell)
{
    std::mt19937 random(1); // NOLINT
    for (int run = 0; run < 60; ++run) {
        const ErrorTracer::Limits limits{int(random() % 6), int(random() % 4), 4000, 3};
        ErrorTracer errors(limits);
        std::vector<ErrorTracer::Entry> all;
        std::vector<QString> texts;
        std::generate_n(std::back_inserter(texts), 5, [&] { return randomText(random); });
        for (int i = int(random() % 100); i > 0; --i) {
            ErrorTracer::Entry added{ErrorSeverity(random() % 4), texts[random() % 5], {}, 1, {{}}, 0};
            while (random() % 3 == 0 && added.causes.size() < limits.causes) {
                added.causes << texts[random() % 5];
            }
            if (random() % 3 != 0) {
                added.sources[0] = {texts[random() % 5], int(random() % 3),
                                    random() % 2 ? texts[0] : QString()};
            }
            errors.add(added.severity, added.text, added.sources[0], added.causes);
            all.push_back(added);
        }
        EXPECT_EQ(linesOf(errors), linesOf(all, limits));
        EXPECT_EQ(errors.count(), all.size());
        expectPage(errors);
        QBuffer json;
        json.open(QIODevice::WriteOnly);
        ASSERT_TRUE(errors.writeJson(json));
        const QJsonObject object = QJsonDocument::fromJson(json.data()).object();
        double sum = 0;
        for (const QJsonValue entry : object[u("entries")].toArray()) {
            sum += entry[u"count"].toDouble();
        }
        for (const QJsonValue notKept : object[u("notKept")].toObject()) {
            sum += notKept.toDouble();
        }
        EXPECT_EQ(sum, double(all.size())) << json.data().toStdString();
        errors.clear();
        EXPECT_TRUE(errors.entries().empty() && !errors.worst() && errors.isEmpty());
    }
}

TEST(ErrorTracer, TellsExceptionsWithTheirCausesAndCutsWhatIsTooLong)
{
    ErrorTracer errors({10, 10, 6, 2});
    try {
        try {
            try {
                try {
                    throw 7;
                } catch (...) {
                    std::throw_with_nested(std::runtime_error("innermost"));
                }
            } catch (...) {
                err::ConcurrentNestedException::rethrow();
            }
        } catch (...) {
            std::throw_with_nested(
                std::logic_error("\xD0\xB0\xD0\xB1\xD0\xB2\xD0\xB3\xD0\xB4\xF0\x9F\x97\xBA"));
        }
    } catch (...) {
        errors.addCurrentException({u("f"), 3, {}}, ErrorSeverity::Fatal);
        errors.addException(std::current_exception());
    }
    errors.addException(nullptr);
    errors.addCurrentException();
    const auto entries = errors.entries();
    ASSERT_EQ(entries.size(), 2u);
    EXPECT_EQ(entries[0].text,
              u("\xD0\xB0\xD0\xB1\xD0\xB2\xD0\xB3\xD0\xB4\xE2\x80\xA6")); // no half of a pair
    EXPECT_EQ(entries[0].causes, (QStringList{u("innerm…"), u("Неизве…")}));
    EXPECT_EQ(entries[0].sources.at(0).text(), u("f:3"));
    EXPECT_EQ(errors.worst(), ErrorSeverity::Fatal);
}

/// Takes so many bytes, some at a time.
class FullDevice : public QIODevice
{
public:
    explicit FullDevice(qint64 room)
        : m_room(room)
    {
        open(QIODevice::WriteOnly | QIODevice::Unbuffered);
    }

protected:
    qint64 readData(char*, qint64) override { return -1; }
    qint64 writeData(const char*, qint64 size) override
    {
        const qint64 taken = std::min({size, m_room, qint64(1000)});
        m_room -= taken;
        return taken > 0 ? taken : -1;
    }

private:
    qint64 m_room;
};

TEST(ErrorTracer, ReportsEveryDeviceThatDoesNotTakeAll)
{
    ErrorTracer errors;
    for (int i = 0; i < 200; ++i) {
        errors.add(ErrorSeverity::Error, u("text %1").arg(i), {u("file"), i, {}});
    }
    const int size = errors.toHtml().toUtf8().size();
    for (const int room : {0, 1, 999, size / 2, size - 1, size, size + 1}) {
        FullDevice device(room);
        EXPECT_EQ(errors.writeHtml(device), room >= size) << room;
    }
    QBuffer closed;
    EXPECT_FALSE(errors.writeText(closed));
}

TEST(ErrorTracer, IsFilledAndReadByManyThreads)
{
    constexpr int each = 5000;
    ErrorTracer errors({3, 2, 100, 1});
    std::vector<std::thread> threads;
    for (int t = 0; t < 4; ++t) {
        threads.emplace_back([&errors, t] {
            for (int i = 0; i < each; ++i) {
                errors.add(ErrorSeverity((t + i) % 4), QString::number(i % 7), {u("f"), i, {}});
                if (i % 500 == 0) {
                    static_cast<void>(errors.toText());
                }
            }
        });
    }
    for (std::thread& thread : threads) {
        thread.join();
    }
    quint64 sum = 0;
    for (const ErrorTracer::Entry& entry : errors.entries()) {
        EXPECT_EQ(entry.sources.size() + entry.moreSources, entry.count);
        sum += entry.count;
    }
    for (int i = 0; i < 4; ++i) {
        sum += errors.notKept(ErrorSeverity(i));
        EXPECT_EQ(errors.count(ErrorSeverity(i)), quint64(each));
    }
    EXPECT_EQ(sum, quint64(4 * each));
    EXPECT_EQ(errors.entries().size(), 12u);
}

} // namespace
} // namespace veltor::test
