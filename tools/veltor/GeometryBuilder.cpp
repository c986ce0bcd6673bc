// One geometry of a GeoJSON text, put together from numbers and brackets.

#include "GeometryBuilder.h"

#include "Text.h"

#include <algorithm>
#include <cmath>
#include <iterator>
#include <utility>

namespace veltor::tool {
namespace {

struct Kind
{
    std::string_view name;
    int level; // of its positions
};

constexpr Kind kinds[] = {
    {"Point", 1},           {"MultiPoint", 2},   {"LineString", 2},        {"Polygon", 3},
    {"MultiLineString", 3}, {"MultiPolygon", 4}, {"GeometryCollection", 0}};
constexpr int deepestLevel = 4;

const Kind* findKind(std::string_view type)
{
    const auto* const kind =
        std::find_if(std::begin(kinds), std::end(kinds), [&](const Kind& k) { return k.name == type; });
    return kind == std::end(kinds) ? nullptr : kind;
}

QString needsNumbers()
{
    return Text::tr("точке нужны два числа");
}

QString fromUtf8(std::string_view text)
{
    return QString::fromUtf8(text.data(), static_cast<int>(text.size()));
}

} // namespace

bool GeometryBuilder::isKind(std::string_view type)
{
    return findKind(type) != nullptr;
}

QString GeometryBuilder::setType(std::string_view type)
{
    m_type = type;
    return m_positionLevel != 0 && expectedLevel() != m_positionLevel ? levelFault() : QString();
}

int GeometryBuilder::expectedLevel() const
{
    const Kind* const kind = findKind(m_type);
    return kind ? kind->level : 0;
}

QString GeometryBuilder::levelFault() const
{
    return Text::tr("не та вложенность координат для %1").arg(QString::fromStdString(m_type));
}

QString GeometryBuilder::beginCoordinates()
{
    // Of members of the same name the last one counts.
    m_hasCoordinates = true;
    m_level = 0;
    m_positionLevel = 0;
    m_emptyLevel = 0;
    m_ring.clear();
    m_rings.clear();
    m_polygonEnds.clear();
    return beginArray();
}

QString GeometryBuilder::beginArray()
{
    ++m_level;
    if (m_positionLevel != 0 && m_level > m_positionLevel) {
        return place(needsNumbers());
    }
    if (m_level > deepestLevel) {
        return Text::tr("координаты вложены глубже, чем у MultiPolygon");
    }
    m_isFresh = true;
    m_numbers = 0;
    return {};
}

QString GeometryBuilder::number(double value, std::string_view text)
{
    m_isFresh = false;
    if (m_positionLevel == 0) {
        m_positionLevel = m_level;
        if (!m_type.empty() && expectedLevel() != m_level) {
            return levelFault();
        }
    } else if (m_level != m_positionLevel) {
        return Text::tr("число вне точки");
    }
    ++m_numbers;
    if (m_numbers > 2) {
        return {}; // a height
    }
    if (!std::isfinite(value)) {
        return place(Text::tr("число %1 слишком велико").arg(fromUtf8(text)));
    }
    if (m_numbers == 1) {
        m_position.setX(value);
        return {};
    }
    if (m_isGeographic && std::fabs(value) > 90) {
        QString fault = checkLatitude(value, text);
        if (!fault.isEmpty()) {
            return fault;
        }
    }
    m_position.setY(value);
    return {};
}

/// Arithmetic on the way into a file leaves some poles a hair beyond themselves.
QString GeometryBuilder::checkLatitude(double& latitude, std::string_view text)
{
    constexpr double hair = 1e-6;
    if (std::fabs(latitude) <= 90 + hair) {
        latitude = std::copysign(90.0, latitude);
        m_hasClamped = true;
        return {};
    }
    QString fault = Text::tr("широта %1 вне пределов ±90 градусов").arg(fromUtf8(text));
    if (std::fabs(latitude) > 360) {
        fault += Text::tr("; координаты на плоскости измеряет --mode cartesian");
    }
    return place(fault);
}

QString GeometryBuilder::endArray(bool& last)
{
    const bool wasEmpty = std::exchange(m_isFresh, false);
    if (m_level == m_positionLevel) {
        if (m_numbers < 2) {
            return place(needsNumbers());
        }
        m_ring.push_back(m_position);
    } else if (wasEmpty && (m_positionLevel == 0 || m_level < m_positionLevel - 2)) {
        m_emptyLevel = std::max(m_emptyLevel, m_level);
    } else if (m_level == m_positionLevel - 1) {
        m_rings.push_back(std::exchange(m_ring, {}));
    } else if (m_level == m_positionLevel - 2) {
        m_polygonEnds.push_back(m_rings.size());
    }
    --m_level;
    last = m_level == 0;
    return {};
}

QString GeometryBuilder::notANumber() const
{
    return place(needsNumbers());
}

QString GeometryBuilder::place(const QString& fault) const
{
    return Text::tr("точка %1: %2").arg(m_ring.size() + 1).arg(fault);
}

QString GeometryBuilder::addTo(MapFeature& feature)
{
    const Kind* const kind = findKind(m_type);
    if (!kind) {
        return m_type.empty()
                   ? Text::tr("ожидается геометрия с type")
                   : Text::tr("неизвестный вид геометрии '%1'").arg(QString::fromStdString(m_type));
    }
    if (kind->level == 0) {
        if (!m_hasParts) {
            return Text::tr("у GeometryCollection нет списка geometries");
        }
        for (GeometryBuilder& part : m_parts) {
            QString fault = part.addTo(feature);
            if (!fault.isEmpty()) {
                return fault;
            }
        }
        feature.kind = QString::fromStdString(m_type);
        return {};
    }
    if (!m_hasCoordinates) {
        return Text::tr("у %1 нет списка coordinates").arg(QString::fromStdString(m_type));
    }
    const bool isEmptyPosition = m_emptyLevel > 1 && m_emptyLevel >= kind->level;
    if (isEmptyPosition || (m_positionLevel != 0 && m_positionLevel != kind->level)) {
        return levelFault();
    }
    feature.hasClamped = feature.hasClamped || m_hasClamped;
    addPolygons(feature);
    return {};
}

void GeometryBuilder::addPolygons(MapFeature& feature)
{
    feature.kind = QString::fromStdString(m_type);
    if (m_type == "Polygon") {
        feature.polygons.push_back(std::move(m_rings));
    } else if (m_type == "MultiPolygon") {
        if (m_polygonEnds.empty()) {
            feature.polygons.emplace_back();
        }
        auto begin = m_rings.begin();
        for (const std::size_t size : m_polygonEnds) {
            const auto end = m_rings.begin() + static_cast<std::ptrdiff_t>(size);
            feature.polygons.emplace_back(std::make_move_iterator(begin), std::make_move_iterator(end));
            begin = end;
        }
    } else if (m_type == "LineString" && m_rings.empty()) {
        feature.lines.emplace_back();
    } else if (m_type == "LineString" || m_type == "MultiLineString") {
        std::move(m_rings.begin(), m_rings.end(), std::back_inserter(feature.lines));
    }
}

} // namespace veltor::tool
