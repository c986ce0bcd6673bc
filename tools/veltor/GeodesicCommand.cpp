// veltor geodesic: the direct and the inverse problem, and points along a geodesic.

#include "Arguments.h"
#include "Command.h"
#include "Coordinates.h"
#include "Ellipsoid.h"
#include "Records.h"
#include "TerminalText.h"
#include "Text.h"

#include <veltor/utils/Distance.h>

#include <array>
#include <cmath>

namespace veltor::tool {
namespace {

double reducedAzimuth(double degrees)
{
    const double azimuth = std::fmod(degrees, 360);
    return azimuth < 0 ? azimuth + 360 : azimuth;
}

double reducedLongitude(double degrees)
{
    const double longitude = std::remainder(degrees, 360);
    return longitude == -180 ? 180 : longitude;
}

/// A geodesic from a start in a direction.
class Line
{
public:
    Line(QPointF start, double azimuthDeg, const Ellipsoid& ellipsoid)
        : m_start(start)
        , m_azimuthDeg(azimuthDeg)
        , m_ellipsoid(ellipsoid)
    {}

    [[nodiscard]] QPointF at(double distance) const
    {
        return distance == 0 ? m_start
                             : utils::directGeodesicProblem(m_start, m_azimuthDeg, distance, m_ellipsoid.a,
                                                            m_ellipsoid.rf);
    }

    /// The direction in which it goes on, from the position a ten-thousandth of a radius farther.
    [[nodiscard]] double azimuthAt(double distance) const
    {
        if (distance == 0) {
            return reducedAzimuth(m_azimuthDeg);
        }
        const QPointF here = at(distance);
        const QPointF beyond = at(distance + m_ellipsoid.a * 1e-4);
        return utils::backGeodesicProblem(here, beyond, m_ellipsoid.a, m_ellipsoid.rf).second;
    }

private:
    QPointF m_start;
    double m_azimuthDeg;
    Ellipsoid m_ellipsoid;
};

constexpr int angleDigits = 9;
constexpr int metreDigits = 4;

/// One problem after the other, from words on the command line or in a line.
class Problems
{
public:
    Problems(QString kind, const Arguments& arguments)
        : m_kind(std::move(kind))
        , m_isUnrolled(arguments.isSet("unroll"))
        , m_points(arguments.number("points", 11, 2, 1000000000))
    {
        if (arguments.isSet("ellipsoid")) {
            m_ellipsoid = parseEllipsoid(arguments.value("ellipsoid"));
        }
        if (m_kind != QLatin1String("line") && arguments.isSet("points")) {
            throw UsageError(Text::tr("--points бывает только у line"));
        }
    }

    [[nodiscard]] std::vector<std::string_view> columns() const
    {
        if (m_kind == QLatin1String("inverse")) {
            return {"distance", "azimuth1", "azimuth2"};
        }
        return m_kind == QLatin1String("direct")
                   ? std::vector<std::string_view>{"lon", "lat", "azimuth2"}
                   : std::vector<std::string_view>{"lon", "lat", "azimuth", "distance"};
    }

    [[nodiscard]] static QString wordsOf(const QString& kind)
    {
        return kind == QLatin1String("direct") ? QStringLiteral("LON LAT AZIMUTH DISTANCE")
                                               : QStringLiteral("LON1 LAT1 LON2 LAT2");
    }

    /// False when the words are no such problem.
    bool solve(const std::vector<std::string_view>& words, Records& records, bool isList) const
    {
        if (words.size() != 4) {
            return false;
        }
        const std::optional<QPointF> start = parsePosition(words[0], words[1]);
        if (m_kind == QLatin1String("direct")) {
            const std::optional<double> azimuth = parseNumber(words[2]);
            const std::optional<double> distance = parseNumber(words[3]);
            if (!start || !azimuth || !distance) {
                return false;
            }
            const Line line(*start, *azimuth, m_ellipsoid);
            const QPointF end = line.at(*distance);
            print({{"lon", shownLongitude(end.x()), angleDigits},
                   {"lat", end.y(), angleDigits},
                   {"azimuth2", line.azimuthAt(*distance), angleDigits}},
                  records, isList);
            return true;
        }
        const std::optional<QPointF> end = parsePosition(words[2], words[3]);
        if (!start || !end) {
            return false;
        }
        const auto [distance, azimuth] =
            utils::backGeodesicProblem(*start, *end, m_ellipsoid.a, m_ellipsoid.rf);
        const Line line(*start, azimuth, m_ellipsoid);
        if (m_kind == QLatin1String("inverse")) {
            print({{"distance", distance, metreDigits},
                   {"azimuth1", azimuth, angleDigits},
                   {"azimuth2", line.azimuthAt(distance), angleDigits}},
                  records, isList);
            return true;
        }
        for (int i = 0; i < m_points; ++i) {
            const double done = distance * i / (m_points - 1);
            const QPointF point = line.at(done);
            print({{"lon", shownLongitude(point.x()), angleDigits},
                   {"lat", point.y(), angleDigits},
                   {"azimuth", line.azimuthAt(done), angleDigits},
                   {"distance", done, metreDigits}},
                  records, false);
        }
        return true;
    }

private:
    static void print(const std::vector<Field>& fields, Records& records, bool isList)
    {
        if (isList) {
            records.addList(fields);
        } else {
            records.add(fields);
        }
    }

    [[nodiscard]] double shownLongitude(double longitude) const
    {
        return m_isUnrolled ? longitude : reducedLongitude(longitude);
    }

    QString m_kind;
    Ellipsoid m_ellipsoid;
    bool m_isUnrolled;
    int m_points;
};

int solveLines(const Problems& problems, const QString& expected, Records& records, bool goesOn)
{
    std::string line;
    std::vector<std::string_view> words;
    int code = Done;
    for (qint64 number = 1; readLine(line); ++number) {
        splitWords(line, words);
        if (words.empty() || problems.solve(words, records, false)) {
            continue;
        }
        constexpr std::size_t shownBytes = 200;
        const QString shown = shownLine(QString::fromStdString(line.substr(0, shownBytes)).trimmed());
        printError(
            Text::tr("veltor: строка %1: ожидаются %2: %3").arg(QString::number(number), expected, shown));
        code = Failed;
        if (!goesOn) {
            break;
        }
    }
    return code;
}

} // namespace

int runGeodesic(const QStringList& words)
{
    Arguments arguments(
        QStringLiteral("geodesic"),
        {Text::tr("direct [LON LAT AZIMUTH DISTANCE] [КЛЮЧИ...]"),
         Text::tr("inverse [LON1 LAT1 LON2 LAT2] [КЛЮЧИ...]"),
         Text::tr("line [LON1 LAT1 LON2 LAT2] [--points N] [КЛЮЧИ...]")},
        Text::tr(
            "Кратчайшие линии на эллипсоиде: куда приведут азимут и расстояние (direct), расстояние и "
            "азимуты "
            "в обеих точках (inverse), N точек вдоль линии вместе с её концами (line). Градусы и метры; "
            "годятся и градусы, минуты и секунды: 37°37'4.8\". Без чисел читает их со стандартного ввода, по "
            "задаче в строке."));
    arguments.addOption("ellipsoid", QStringLiteral("A,RF"),
                        Text::tr("большая полуось и обратное сжатие (0 — сфера); без ключа WGS 84"));
    arguments.addOption("points", QStringLiteral("N"), Text::tr("число точек у line; без ключа 11"));
    arguments.addOption("format", Text::tr("СЛОВО"),
                        Text::tr("вид вывода: text (так и без ключа), csv, json"));
    arguments.addFlag("json", Text::tr("то же, что --format json: объект в строке, числа со всеми знаками"));
    arguments.addFlag("header", Text::tr("перед строками — строка с названиями столбцов"));
    arguments.addFlag("unroll", Text::tr("долготы вдоль линии без скачка на ±180°"));
    arguments.addFlag("continue", Text::tr("о неверной строке сообщить и читать дальше; код завершения 1"));
    if (!arguments.parse(words)) {
        return Done;
    }
    constexpr std::array formats{Named<RecordFormat>{"text", RecordFormat::Text},
                                 Named<RecordFormat>{"csv", RecordFormat::Csv},
                                 Named<RecordFormat>{"json", RecordFormat::Json}};
    const RecordFormat format = arguments.choice(
        "format", formats, arguments.isSet("json") ? RecordFormat::Json : RecordFormat::Text);
    arguments.expectWords(1, 5);
    const QString kind = arguments.words()[0];
    if (!QStringList{QStringLiteral("direct"), QStringLiteral("inverse"), QStringLiteral("line")}.contains(
            kind)) {
        throw UsageError(Text::tr("ожидается direct, inverse или line, а не '%1'").arg(shownLine(kind)));
    }
    const Problems problems(kind, arguments);
    Records records(format, problems.columns(), arguments.isSet("header"));
    const QString expected = Problems::wordsOf(kind);
    if (arguments.words().size() == 1) {
        return solveLines(problems, expected, records, arguments.isSet("continue"));
    }
    const std::string line = arguments.words().mid(1).join(QLatin1Char(' ')).toStdString();
    std::vector<std::string_view> parts;
    splitWords(line, parts);
    if (!problems.solve(parts, records, true)) {
        throw UsageError(
            Text::tr("ожидаются %1, а не '%2'").arg(expected, shownLine(QString::fromStdString(line))));
    }
    return Done;
}

} // namespace veltor::tool
