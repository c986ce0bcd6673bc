#include "GeoJson.h"

#include <QtCore/QFile>
#include <QtCore/QJsonArray>
#include <QtCore/QJsonDocument>
#include <QtCore/QJsonObject>

#include <cmath>
#include <stdexcept>

namespace veltor::tool {
namespace {

[[noreturn]] void fail(const QString& text)
{
    throw std::runtime_error(text.toStdString());
}

QJsonArray array(const QJsonValue& value, const char* what)
{
    if (!value.isArray()) {
        fail(QStringLiteral("%1 expected").arg(QLatin1String(what)));
    }
    return value.toArray();
}

QPointF position(const QJsonValue& value, bool geographic)
{
    const QJsonArray numbers = array(value, "a position");
    const QPointF p(numbers.at(0).toDouble(NAN), numbers.at(1).toDouble(NAN));
    if (!std::isfinite(p.x()) || !std::isfinite(p.y())) {
        fail(QStringLiteral("a position needs two numbers"));
    }
    if (geographic && std::fabs(p.y()) > 90) {
        fail(QStringLiteral("latitude %1 is not within 90 degrees").arg(p.y()));
    }
    return p;
}

Ring ring(const QJsonValue& value, bool geographic)
{
    Ring result;
    const QJsonArray positions = array(value, "a list of positions");
    result.reserve(positions.size());
    for (int i = 0; i < positions.size(); ++i) {
        try {
            result << position(positions.at(i), geographic);
        } catch (const std::runtime_error& error) {
            fail(QStringLiteral("position %1: %2").arg(i + 1).arg(QString::fromUtf8(error.what())));
        }
    }
    return result;
}

std::vector<Ring> rings(const QJsonValue& value, bool geographic)
{
    std::vector<Ring> result;
    const QJsonArray items = array(value, "a list of lines");
    for (const QJsonValue& item : items) {
        result.push_back(ring(item, geographic));
    }
    return result;
}

/// Fills in what the geometry holds. False: a kind that has neither area nor length.
bool readGeometry(const QJsonObject& geometry, bool geographic, MapFeature& feature)
{
    const QString kind = geometry.value(QLatin1String("type")).toString();
    const QJsonValue coordinates = geometry.value(QLatin1String("coordinates"));
    if (kind == QLatin1String("Polygon")) {
        feature.polygons.push_back(rings(coordinates, geographic));
    } else if (kind == QLatin1String("MultiPolygon")) {
        const QJsonArray polygons = array(coordinates, "a list of polygons");
        for (const QJsonValue& polygon : polygons) {
            feature.polygons.push_back(rings(polygon, geographic));
        }
    } else if (kind == QLatin1String("LineString")) {
        feature.lines.push_back(ring(coordinates, geographic));
    } else if (kind == QLatin1String("MultiLineString")) {
        feature.lines = rings(coordinates, geographic);
    } else {
        return false;
    }
    return true;
}

QString nameOf(const QJsonObject& feature, int number)
{
    const QJsonObject properties = feature.value(QLatin1String("properties")).toObject();
    for (const QJsonValue& name :
         {properties.value(QLatin1String("name")), properties.value(QLatin1String("NAME")),
          feature.value(QLatin1String("id"))}) {
        QString text = name.toVariant().toString();
        if (!text.isEmpty()) {
            return text;
        }
    }
    return QStringLiteral("#%1").arg(number);
}

void readFeature(const QJsonValue& value, int number, bool geographic, MapContents& contents)
{
    const QJsonObject object = value.toObject();
    const bool isFeature = object.value(QLatin1String("type")).toString() == QLatin1String("Feature");
    const QJsonValue geometry = isFeature ? object.value(QLatin1String("geometry")) : value;
    MapFeature feature{nameOf(object, number), {}, {}};
    const QString place = QStringLiteral("feature %1 (%2)").arg(number).arg(feature.name);
    const QString kind = geometry.toObject().value(QLatin1String("type")).toString();
    if (kind.isEmpty() && !(isFeature && geometry.isNull())) {
        fail(QStringLiteral("%1: a geometry with a type expected").arg(place));
    }
    try {
        if (readGeometry(geometry.toObject(), geographic, feature)) {
            contents.features.push_back(std::move(feature));
            return;
        }
    } catch (const std::runtime_error& error) {
        fail(QStringLiteral("%1: %2").arg(place, QString::fromUtf8(error.what())));
    }
    contents.skipped << QStringLiteral("%1: %2 is not measured, skipped")
                            .arg(place, kind.isEmpty() ? QStringLiteral("no geometry") : kind);
}

MapContents readDocument(const QByteArray& bytes, bool geographic)
{
    QJsonParseError error;
    const QJsonDocument document = QJsonDocument::fromJson(bytes, &error);
    if (error.error != QJsonParseError::NoError) {
        fail(QStringLiteral("offset %1: %2").arg(error.offset).arg(error.errorString()));
    }
    MapContents contents;
    const QJsonObject root = document.object();
    if (root.value(QLatin1String("type")).toString() != QLatin1String("FeatureCollection")) {
        readFeature(root, 1, geographic, contents);
        return contents;
    }
    const QJsonArray features = array(root.value(QLatin1String("features")), "a list of features");
    int number = 0;
    for (const QJsonValue& feature : features) {
        ++number;
        if (feature.toObject().value(QLatin1String("type")).toString() != QLatin1String("Feature")) {
            fail(QStringLiteral("feature %1: not of the type Feature").arg(number));
        }
        readFeature(feature, number, geographic, contents);
    }
    return contents;
}

} // namespace

MapContents readGeoJson(const QString& fileName, bool geographic)
{
    QFile file(fileName);
    if (!file.open(QIODevice::ReadOnly)) {
        fail(QStringLiteral("%1: %2").arg(fileName, file.errorString()));
    }
    try {
        return readDocument(file.readAll(), geographic);
    } catch (const std::runtime_error& error) {
        fail(QStringLiteral("%1: %2").arg(fileName, QString::fromUtf8(error.what())));
    }
}

} // namespace veltor::tool
