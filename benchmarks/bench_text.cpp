// Numbers to text, cached expressions, lines, letters and dates, each beside what a caller would use without
// us.

#include <veltor/utils/DateFormats.h>
#include <veltor/utils/LineStream.h>
#include <veltor/utils/NumberFormat.h>
#include <veltor/utils/NumberToText.h>
#include <veltor/utils/RegularExpressionCache.h>
#include <veltor/utils/Transliteration.h>

#include <QtCore/QTemporaryFile>
#include <QtCore/QTextStream>

#include <benchmark/benchmark.h>

#include <algorithm>
#include <cmath>
#include <cstdlib>
#include <cstring>
#include <random>
#include <vector>

namespace {

using namespace veltor::utils;

/// Coordinates, lengths and counts as a map holds them, and for every fourth number any bits at all.
std::vector<double> numbers()
{
    std::mt19937_64 random(1);
    std::vector<double> result(4096);
    for (std::size_t i = 0; i < result.size(); ++i) {
        const auto bits = random();
        switch (i % 4) {
        case 0:
            result[i] = static_cast<double>(bits >> 11) / 9007199254740992.0 * 360.0 - 180.0;
            break;
        case 1:
            result[i] = std::round(static_cast<double>(bits % 1000000000)) / 1000.0;
            break;
        case 2:
            result[i] = static_cast<double>(bits % 100000);
            break;
        default:
            std::memcpy(&result[i], &bits, sizeof bits);
            break;
        }
    }
    return result;
}

template <typename Function>
void overNumbers(benchmark::State& state, Function function)
{
    const std::vector<double> values = numbers();
    for (auto _ : state) {
        for (const double x : values) {
            benchmark::DoNotOptimize(function(x));
        }
    }
    state.SetItemsProcessed(state.iterations() * static_cast<qint64>(values.size()));
}

void PlainText_Qt(benchmark::State& state)
{
    const QLocale locale = QLocale::c();
    overNumbers(state, [&](double x) { return locale.toString(x, 'g', 15); });
}
BENCHMARK(PlainText_Qt);

void PlainText_Veltor(benchmark::State& state)
{
    overNumbers(state, [](double x) { return toString(x); });
}
BENCHMARK(PlainText_Veltor);

void PlainText_VeltorGerman(benchmark::State& state)
{
    const QLocale locale(QLocale::German);
    overNumbers(state, [&](double x) { return toLocalizedString(x, locale); });
}
BENCHMARK(PlainText_VeltorGerman);

void PlainText_VeltorShortest(benchmark::State& state)
{
    const NumberFormat format(NumberFormat::Shortest);
    overNumbers(state, [&](double x) { return format.toString(x); });
}
BENCHMARK(PlainText_VeltorShortest);

const QString& datePattern()
{
    static const QString pattern =
        QStringLiteral("^(\\d{4})-(\\d{2})-(\\d{2})(T(\\d{2}):(\\d{2})(:(\\d{2}))?)?$");
    return pattern;
}

void Expression_Constructed(benchmark::State& state)
{
    for (auto _ : state) {
        const QRegularExpression expression(datePattern());
        expression.optimize();
        benchmark::DoNotOptimize(&expression);
    }
}
BENCHMARK(Expression_Constructed);

/// The cache as an application uses it: a few hundred expressions, one of them asked for again and again.
RegularExpressionCache& filledCache()
{
    static auto* const cache = [] {
        auto* result = new RegularExpressionCache;
        for (int i = 0; i < 500; ++i) {
            (void)result->retrieve(datePattern() + QString::number(i));
        }
        return result;
    }();
    return *cache;
}

void Expression_SameHit(benchmark::State& state)
{
    RegularExpressionCache& cache = filledCache();
    for (auto _ : state) {
        benchmark::DoNotOptimize(cache.retrieve(datePattern()));
    }
}
BENCHMARK(Expression_SameHit)->ThreadRange(1, 2)->UseRealTime();

void Expression_AlternatingHits(benchmark::State& state)
{
    RegularExpressionCache& cache = filledCache();
    const QString patterns[] = {datePattern() + QString::number(7), datePattern() + QString::number(400)};
    std::size_t i = 0;
    for (auto _ : state) {
        benchmark::DoNotOptimize(cache.retrieve(patterns[i++ % 2]));
    }
}
BENCHMARK(Expression_AlternatingHits)->ThreadRange(1, 2)->UseRealTime();

/// Hits all over a cache of as many entries as the argument says: the look-up and the order of use.
void Expression_AnyHit(benchmark::State& state)
{
    const auto count = static_cast<std::size_t>(state.range(0));
    RegularExpressionCache cache(static_cast<unsigned>(count));
    std::vector<QString> patterns;
    for (std::size_t i = 0; i < count; ++i) {
        patterns.push_back(datePattern() + QString::number(i));
        (void)cache.retrieve(patterns.back());
    }
    std::mt19937 random(1);
    std::shuffle(patterns.begin(), patterns.end(), random);
    std::size_t i = 0;
    for (auto _ : state) {
        benchmark::DoNotOptimize(cache.retrieve(patterns[i++ % count]));
    }
}
BENCHMARK(Expression_AnyHit)->Arg(1000)->Arg(20000);

/// 50 MB of lines of 20 to 140 characters; removed with the program.
class TextFile
{
public:
    explicit TextFile(const std::vector<QByteArray>& sources)
    {
        if (!m_file.open()) {
            std::abort();
        }
        std::mt19937 random(1);
        for (std::size_t written = 0, line = 0; written < 50000000; ++line) {
            const QString source = QString::fromUtf8(sources[line % sources.size()].repeated(4));
            const QByteArray text = source.left(static_cast<int>(20 + random() % 120)).toUtf8() + '\n';
            m_file.write(text);
            written += static_cast<std::size_t>(text.size());
        }
        m_file.close();
    }

    QString name() const { return m_file.fileName(); }

private:
    QTemporaryFile m_file;
};

enum Text
{
    Latin,
    HalfCyrillic
};

QString textFile(int text)
{
    const QByteArray latin("The quick brown fox jumps over the lazy dog; ");
    const QByteArray cyrillic("Съешь же ещё этих мягких французских булок, ");
    static const TextFile files[] = {TextFile({latin}), TextFile({latin, cyrillic})};
    return files[text].name();
}

template <typename Read>
void overLines(benchmark::State& state, Read read)
{
    const QString name = textFile(static_cast<int>(state.range(0)));
    const auto once = [&name, &read] {
        QFile file(name);
        if (!file.open(QIODevice::ReadOnly)) {
            std::abort();
        }
        QTextStream stream(&file);
        stream.setCodec("UTF-8");
        benchmark::DoNotOptimize(read(stream));
        return file.size();
    };
    once(); // the file is made and in the page cache before the clock runs
    qint64 bytes = 0;
    for (auto _ : state) {
        bytes += once();
    }
    state.SetBytesProcessed(bytes);
}

void Lines_Qt(benchmark::State& state)
{
    overLines(state, [](QTextStream& stream) {
        qint64 characters = 0;
        for (QString line = stream.readLine(); !line.isNull(); line = stream.readLine()) {
            characters += line.size();
        }
        return characters;
    });
}
BENCHMARK(Lines_Qt)->ArgName("text")->Arg(Latin)->Arg(HalfCyrillic)->Unit(benchmark::kMillisecond);

void Lines_Veltor(benchmark::State& state)
{
    overLines(state, [](QTextStream& stream) {
        LineStream lines(stream);
        qint64 characters = 0;
        while (!lines.atEnd()) {
            characters += lines.readLine().size();
        }
        return characters;
    });
}
BENCHMARK(Lines_Veltor)->ArgName("text")->Arg(Latin)->Arg(HalfCyrillic)->Unit(benchmark::kMillisecond);

/// What both pay before the first line: the stream's own decoding.
void Lines_Decoding(benchmark::State& state)
{
    overLines(state, [](QTextStream& stream) {
        qint64 characters = 0;
        for (QString text = stream.read(2048); !text.isEmpty(); text = stream.read(2048)) {
            characters += text.size();
        }
        return characters;
    });
}
BENCHMARK(Lines_Decoding)->ArgName("text")->Arg(Latin)->Arg(HalfCyrillic)->Unit(benchmark::kMillisecond);

/// A gazetteer's names.
QString names()
{
    return QStringLiteral("Щёлково, Йошкар-Ола, Объездная улица, ЦЕНТРАЛЬНЫЙ парк, Нижний Новгород\n")
        .repeated(200);
}

void Latin_Replaced(benchmark::State& state)
{
    static const std::pair<const char16_t*, const char16_t*> letters[] = {
        {u"щ", u"shh"}, {u"Щ", u"Shh"}, {u"ё", u"yo"}, {u"й", u"j"},  {u"ш", u"sh"},
        {u"к", u"k"},   {u"а", u"a"},   {u"р", u"r"},  {u"о", u"o"},  {u"л", u"l"},
        {u"ъ", u"``"},  {u"е", u"e"},   {u"з", u"z"},  {u"д", u"d"},  {u"н", u"n"},
        {u"я", u"ya"},  {u"у", u"u"},   {u"и", u"i"},  {u"ц", u"cz"}, {u"п", u"p"},
        {u"ж", u"zh"},  {u"в", u"v"},   {u"г", u"g"},  {u"б", u"b"},  {u"ы", u"y`"}};
    const QString text = names();
    for (auto _ : state) {
        QString latin = text;
        for (const auto& [cyrillic, letter] : letters) {
            latin.replace(QString::fromUtf16(cyrillic), QString::fromUtf16(letter));
        }
        benchmark::DoNotOptimize(latin);
    }
    state.SetItemsProcessed(state.iterations() * text.size());
}
BENCHMARK(Latin_Replaced)->Name("letters/chain of QString::replace");

void Latin_Veltor(benchmark::State& state)
{
    const QString text = names();
    for (auto _ : state) {
        benchmark::DoNotOptimize(toLatin(text, LatinStandard::Gost779B));
    }
    state.SetItemsProcessed(state.iterations() * text.size());
}
BENCHMARK(Latin_Veltor)->Name("letters/toLatin");

void Cyrillic_Veltor(benchmark::State& state)
{
    const QString text = toLatin(names(), LatinStandard::Gost779B);
    for (auto _ : state) {
        benchmark::DoNotOptimize(toCyrillic(text, LatinStandard::Gost779B));
    }
    state.SetItemsProcessed(state.iterations() * text.size());
}
BENCHMARK(Cyrillic_Veltor)->Name("letters/toCyrillic");

void Date_Qt(benchmark::State& state)
{
    const QLocale locale(QLocale::Russian);
    const QString text = QStringLiteral("3 апреля 2024 г.");
    const QStringList formats = DateFormats::ofLocale(locale).formats();
    for (auto _ : state) {
        for (const QString& format : formats) {
            benchmark::DoNotOptimize(locale.toDate(text, format));
        }
    }
}
BENCHMARK(Date_Qt)->Name("date/QLocale::toDate by each format");

void Date_Veltor(benchmark::State& state)
{
    const DateFormats formats = DateFormats::ofLocale(QLocale(QLocale::Russian));
    const QString text = QStringLiteral("3 апреля 2024 г.");
    for (auto _ : state) {
        benchmark::DoNotOptimize(formats.read(text));
    }
}
BENCHMARK(Date_Veltor)->Name("date/DateFormats");

} // namespace
