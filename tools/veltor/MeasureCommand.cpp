#include "Command.h"
#include "GeoJson.h"
#include "JsonText.h"
#include "MeasureOptions.h"
#include "ParallelRun.h"

#include <veltor/core/CalcMode.h>
#include <veltor/utils/Area.h>
#include <veltor/utils/Distance.h>

#include <QtCore/QJsonArray>
#include <QtCore/QJsonObject>

#include <algorithm>
#include <cmath>
#include <limits>

namespace veltor::tool {
namespace {

using core::CalcMode;

constexpr auto usage =
    "Usage: veltor measure FILE.geojson [--mode WORD] [--ellipsoid A,RF] [--largest N]\n"
    "               [--json] [--layout NAME] [--eol lf|crlf|cr]\n\n"
    "Areas and perimeters of the polygons, lengths of the lines of a GeoJSON file, and the totals.\n"
    "  --mode WORD       cartesian, plane; spherical, sphere; ellipsoidal, ellipsoid, ellipse;\n"
    "                    auto, default, '': the ellipsoid\n"
    "  --ellipsoid A,RF  semi-major axis and inverse flattening (0: a sphere); WGS 84 unless given, for\n"
    "                    a sphere the radius 6370997\n"
    "  --largest N       the N features of the largest area, then length, in this order\n"
    "  --json            one object: mode, features (name, area, perimeter or length), total\n"
    "  --layout NAME     layout of the JSON text: compact, squeeze, indented (unless given), unindented,\n"
    "                    brackets-indented, comma-first, delimited; implies --json\n"
    "  --eol WORD        its line ends: lf (unless given), crlf, cr; implies --json\n"
    "Metres and square metres in JSON, with --mode cartesian the unit of the file.\n";

struct Model
{
    CalcMode mode = CalcMode::Ellipsoidal;
    Ellipsoid ellipsoid;
};

struct Measures
{
    double area = 0;
    double perimeter = 0;
    double length = 0;
};

Model modelOf(const MeasureOptions& options)
{
    Model model{core::findCalcMode(options.mode), options.ellipsoid};
    if (model.mode == CalcMode::Invalid) {
        throw UsageError(
            QStringLiteral("veltor: '%1' is no mode. Modes: cartesian, spherical, ellipsoidal, auto, "
                           "'' (empty), sphere, ellipsoid, default, ellipse, plane")
                .arg(options.mode));
    }
    if (model.mode == CalcMode::Auto) {
        model.mode = CalcMode::Ellipsoidal;
    }
    if (model.mode == CalcMode::Spherical) {
        model.ellipsoid.rf = 0;
        if (!options.hasEllipsoid) {
            model.ellipsoid.a = 6370997;
        }
    }
    return model;
}

const char* nameOf(CalcMode mode)
{
    switch (mode) {
    case CalcMode::Cartesian:
        return "cartesian";
    case CalcMode::Spherical:
        return "spherical";
    default:
        return "ellipsoidal";
    }
}

/// Longitudes without a jump at the +-180 meridian: the library takes them as they stand on the sphere.
Ring unrolled(Ring ring)
{
    double turns = 0;
    for (int i = 1; i < ring.size(); ++i) {
        const double step = ring[i].x() + turns - ring[i - 1].x();
        turns -= std::fabs(step) > 180 ? 360 * std::round(step / 360) : 0;
        ring[i].rx() += turns;
    }
    return ring;
}

std::pair<double, double> measureRing(const Ring& ring, const Model& model)
{
    if (model.mode == CalcMode::Cartesian) {
        return utils::cartesianPolygonAreaPerimeter(ring);
    }
    if (model.mode == CalcMode::Spherical) {
        // Around the south pole the library measures the other side of the ring.
        constexpr double pi = 3.14159265358979323846;
        const auto [area, perimeter] =
            utils::sphericalPolygonAreaPerimeter(unrolled(ring), model.ellipsoid.a);
        return {std::min(area, 4 * pi * model.ellipsoid.a * model.ellipsoid.a - area), perimeter};
    }
    return utils::ellipsoidPolygonAreaPerimeter(ring, model.ellipsoid.a, model.ellipsoid.rf);
}

double measureEdge(QPointF p1, QPointF p2, const Model& model)
{
    return model.mode == CalcMode::Cartesian
               ? utils::cartesianDistance(p1, p2)
               : utils::ellipsoidDistance(p1, p2, model.ellipsoid.a, model.ellipsoid.rf);
}

Measures measureFeature(const MapFeature& feature, const Model& model)
{
    Measures sum;
    for (const std::vector<Ring>& polygon : feature.polygons) {
        bool isHole = false;
        for (const Ring& ring : polygon) {
            const auto [area, perimeter] = measureRing(ring, model);
            sum.area += isHole ? -area : area;
            sum.perimeter += perimeter;
            isHole = true;
        }
    }
    for (const Ring& line : feature.lines) {
        for (int i = 1; i < line.size(); ++i) {
            sum.length += measureEdge(line[i - 1], line[i], model);
        }
    }
    return sum;
}

void showProgress(int done, int count)
{
    if (!hasTerminal()) {
        return;
    }
    constexpr int width = 40;
    const int filled = count > 0 ? static_cast<int>(qint64(done) * width / count) : width;
    const QString bar = QString(filled, QLatin1Char('#')) + QString(width - filled, QLatin1Char('.'));
    printProgress(done < count ? QStringLiteral("[%1] %2 of %3").arg(bar).arg(done).arg(count) : QString());
}

/// The order in which features are shown.
std::vector<size_t> selection(const std::vector<Measures>& measures, int largest)
{
    std::vector<size_t> order(measures.size());
    for (size_t i = 0; i < order.size(); ++i) {
        order[i] = i;
    }
    if (largest > 0) {
        std::stable_sort(order.begin(), order.end(), [&](size_t left, size_t right) {
            const Measures& a = measures[left];
            const Measures& b = measures[right];
            return a.area != b.area ? a.area > b.area : a.length > b.length;
        });
        order.resize(std::min(order.size(), static_cast<size_t>(largest)));
    }
    return order;
}

/// A plane measure may overflow, which JSON cannot tell.
QJsonValue toJson(double number)
{
    return std::isfinite(number) ? QJsonValue(number) : QJsonValue();
}

QJsonObject toJson(const Measures& measures, bool polygons, bool lines)
{
    QJsonObject object;
    if (polygons) {
        object.insert(QLatin1String("area"), toJson(measures.area));
        object.insert(QLatin1String("perimeter"), toJson(measures.perimeter));
    }
    if (lines) {
        object.insert(QLatin1String("length"), toJson(measures.length));
    }
    return object;
}

/// Rows of text columns: the first one to the left, numbers to the right.
QString table(const std::vector<QStringList>& rows)
{
    std::vector<int> widths;
    for (const QStringList& row : rows) {
        widths.resize(static_cast<size_t>(row.size()));
        for (int column = 0; column < row.size(); ++column) {
            int& width = widths[static_cast<size_t>(column)];
            width = std::max(width, row[column].size());
        }
    }
    QString text;
    for (const QStringList& row : rows) {
        text += row[0].leftJustified(widths[0]);
        for (int column = 1; column < row.size(); ++column) {
            text += QStringLiteral("  ") + row[column].rightJustified(widths[static_cast<size_t>(column)]);
        }
        text += QLatin1Char('\n');
    }
    return text;
}

/// One `veltor measure`: the file's features with their measures.
class Report
{
public:
    Report(std::vector<MapFeature> features, std::vector<Measures> measures, int largest)
        : m_features(std::move(features))
        , m_measures(std::move(measures))
        , m_order(selection(m_measures, largest))
    {
        for (const Measures& m : m_measures) {
            m_total = {m_total.area + m.area, m_total.perimeter + m.perimeter, m_total.length + m.length};
        }
    }

    [[nodiscard]] QJsonObject asJson(const Model& model) const
    {
        QJsonArray features;
        for (const size_t i : m_order) {
            QJsonObject object =
                toJson(m_measures[i], m_features[i].lines.empty(), !m_features[i].lines.empty());
            object.insert(QLatin1String("name"), m_features[i].name);
            features.append(object);
        }
        return {{QStringLiteral("mode"), QLatin1String(nameOf(model.mode))},
                {QStringLiteral("features"), features},
                {QStringLiteral("total"), toJson(m_total, true, true)}};
    }

    [[nodiscard]] QString asTable(const Model& model) const
    {
        // Kilometres once there is a square kilometre to show, or a line as long.
        const bool plane = model.mode == CalcMode::Cartesian;
        const bool kilometres = !plane && (m_total.area >= 1e6 || m_total.length >= 1e4);
        const double metres = kilometres ? 1e3 : 1;
        const QString unit = plane ? QString() : kilometres ? QStringLiteral(", km") : QStringLiteral(", m");
        const QString areaUnit = unit.isEmpty() ? unit : unit + QChar(0x00B2);
        const auto row = [&](const QString& name, const Measures& m, bool polygons, bool lines) {
            const auto number = [](bool shown, double value) {
                return shown ? QString::number(value, 'f', 3) : QStringLiteral("-");
            };
            return QStringList{name, number(polygons, m.area / (metres * metres)),
                               number(polygons, m.perimeter / metres), number(lines, m.length / metres)};
        };
        std::vector<QStringList> rows{{QStringLiteral("name"), QStringLiteral("area") + areaUnit,
                                       QStringLiteral("perimeter") + unit, QStringLiteral("length") + unit}};
        for (const size_t i : m_order) {
            const bool lines = !m_features[i].lines.empty();
            rows.push_back(row(m_features[i].name, m_measures[i], !lines, lines));
        }
        const QString all = QStringLiteral("total of %1").arg(m_features.size());
        rows.push_back(row(all, m_total, true, true));
        return table(rows);
    }

private:
    std::vector<MapFeature> m_features;
    std::vector<Measures> m_measures;
    std::vector<size_t> m_order;
    Measures m_total;
};

} // namespace

int runMeasure(const QStringList& words)
{
    Arguments arguments(QStringLiteral("measure"), {QStringLiteral("FILE")}, QString::fromUtf8(usage));
    for (const char* name : {"mode", "ellipsoid", "largest", "layout", "eol"}) {
        arguments.addOption(name, QStringLiteral("X"), QString());
    }
    arguments.addFlag("json", QString());
    if (!arguments.parse(words)) {
        return Done;
    }
    arguments.expectWords(1, 1);
    const MeasureOptions options = measureOptions(arguments);
    const Model model = modelOf(options);
    MapContents contents = readGeoJson(arguments.words()[0], model.mode != CalcMode::Cartesian);
    for (const QString& line : contents.skipped) {
        printError(QStringLiteral("veltor: ") + line);
    }
    const int count = static_cast<int>(contents.features.size());
    std::vector<Measures> measures(contents.features.size());
    const auto measureOne = [&](int i) {
        const auto index = static_cast<size_t>(i);
        measures[index] = measureFeature(contents.features[index], model);
    };
    const bool finished = runParallel(count, measureOne, [&](int done) { showProgress(done, count); });
    if (!finished) {
        showProgress(count, count);
        throw std::runtime_error("interrupted; nothing is printed");
    }
    const Report report(std::move(contents.features), std::move(measures), options.largest);
    if (options.json) {
        JsonText text(*options.layout, options.endOfLine);
        text.value(report.asJson(model));
        print(text.take() + (options.endOfLine == json::EndOfLine::Lf     ? "\n"
                             : options.endOfLine == json::EndOfLine::CrLf ? "\r\n"
                                                                          : "\r"));
    } else {
        print(report.asTable(model));
    }
    return Done;
}

} // namespace veltor::tool
