// The events of the JSON parser become features of a map.

#include "MapHandler.h"

#include "Text.h"

#include <charconv>
#include <cmath>
#include <limits>

namespace veltor::tool {
namespace {

constexpr int deepest = 10000;

QString fromUtf8(std::string_view text)
{
    return QString::fromUtf8(text.data(), static_cast<int>(text.size()));
}

} // namespace

MapHandler::Member MapHandler::memberOf(std::string_view name)
{
    struct Row
    {
        std::string_view name;
        Member member;
    };
    static constexpr Row rows[] = {{"type", Member::Type},
                                   {"features", Member::Features},
                                   {"geometry", Member::Geometry},
                                   {"id", Member::Id},
                                   {"geometries", Member::Geometries},
                                   {"coordinates", Member::Coordinates},
                                   {"properties", Member::Properties}};
    for (const Row& row : rows) {
        if (row.name == name) {
            return row.member;
        }
    }
    return Member::Foreign;
}

bool MapHandler::fail(const QString& text)
{
    m_fault = text;
    return false;
}

QString MapHandler::name() const
{
    for (const std::string& candidate : m_names) {
        if (!candidate.empty()) {
            return QString::fromStdString(candidate);
        }
    }
    return QStringLiteral("#%1").arg(m_feature.number);
}

bool MapHandler::Double(double approximation)
{
    if (m_places.back() != Place::Coordinates) {
        return number(approximation);
    }
    const std::string_view text = m_input.numberBefore();
    double value = approximation;
    const auto result = std::from_chars(text.data(), text.data() + text.size(), value);
    if (result.ec == std::errc::result_out_of_range) {
        value = std::fabs(approximation) < 1 ? 0 : std::numeric_limits<double>::infinity();
    }
    return step(m_objects.back().own.number(value, text));
}

bool MapHandler::number(double value)
{
    if (m_places.back() == Place::Coordinates) {
        return step(m_objects.back().own.number(value, m_input.numberBefore()));
    }
    return scalar(m_input.numberBefore());
}

bool MapHandler::String(const char* text, rapidjson::SizeType length, bool)
{
    if (m_places.back() == Place::Object && m_objects.back().member == Member::Type) {
        Object& object = m_objects.back();
        object.type.assign(text, length);
        const bool isGeometry = GeometryBuilder::isKind(object.type);
        const bool fits = object.role == Object::Feature ? object.type == "Feature"
                          : object.role == Object::Geometry
                              ? isGeometry
                              : isGeometry || object.type == "Feature" || object.type == "FeatureCollection";
        if (!fits) {
            return fail(
                object.role == Object::Feature
                    ? Text::tr("ожидается Feature, а не '%1'").arg(QString::fromStdString(object.type))
                    : Text::tr("неизвестный вид '%1'").arg(QString::fromStdString(object.type)));
        }
        return !isGeometry || step(object.own.setType(object.type));
    }
    return scalar({text, length});
}

bool MapHandler::scalar(std::string_view text, bool isNull)
{
    switch (m_places.back()) {
    case Place::Foreign:
        return true;
    case Place::Object:
        return scalarMember(text, isNull);
    case Place::Properties:
        if (m_nameSlot >= 0 && !isNull) {
            m_names[m_nameSlot] = text;
        }
        propertyEnded(m_input.offset());
        return true;
    case Place::Document:
        return fail(Text::tr("это не карта: ожидается объект"));
    case Place::Coordinates:
        return fail(m_objects.back().own.notANumber());
    default:
        return fail(Text::tr("ожидается объект"));
    }
}

bool MapHandler::scalarMember(std::string_view text, bool isNull)
{
    Object& object = m_objects.back();
    switch (object.member) {
    case Member::Type:
        return fail(Text::tr("type должен быть строкой"));
    case Member::Id:
        if (!isNull && object.role != Object::Geometry) {
            m_names[2] = text;
        }
        return true;
    case Member::Geometry:
        object.hasGeometry = isNull;
        object.hasNullGeometry = isNull;
        object.geometry.clear();
        return isNull || fail(Text::tr("ожидается геометрия с type"));
    case Member::Properties:
        if (object.role != Object::Geometry && isNull) {
            m_feature.properties.end = static_cast<std::size_t>(m_input.offset() - m_begin);
            m_feature.properties.begin = m_feature.properties.end - 4;
        }
        return true;
    case Member::Features:
    case Member::Geometries:
    case Member::Coordinates:
        return fail(Text::tr("ожидается список"));
    case Member::Foreign:
        break;
    }
    return true;
}

bool MapHandler::Key(const char* text, rapidjson::SizeType length, bool)
{
    const std::string_view key(text, length);
    if (m_places.back() == Place::Object) {
        m_objects.back().member = memberOf(key);
    } else if (m_places.back() == Place::Properties) {
        const bool isAsked = !m_reading.nameProperty.isEmpty();
        m_nameSlot = isAsked ? (m_reading.nameProperty == fromUtf8(key) ? 0 : -1)
                             : (key == "name"   ? 0
                                : key == "NAME" ? 1
                                                : -1);
        m_isMeasureName = key == "area" || key == "perimeter" || key == "length";
    }
    return true;
}

void MapHandler::propertyEnded(qint64 endOffset)
{
    if (m_reading.keepText) {
        const auto end = static_cast<std::size_t>(endOffset - m_begin);
        m_feature.properties.members.push_back({m_memberBegin, end, m_isMeasureName});
        m_memberBegin = end;
    }
}

bool MapHandler::open(Place place)
{
    if (m_places.size() > deepest) {
        return fail(Text::tr("вложенность больше %1").arg(deepest));
    }
    m_places.push_back(place);
    return true;
}

void MapHandler::beginFeature()
{
    m_feature = MapFeature();
    m_feature.number = ++m_count;
    m_begin = m_input.offset();
    for (std::string& candidate : m_names) {
        candidate.clear();
    }
    if (m_reading.keepText) {
        m_input.keep();
    }
}

bool MapHandler::pushObject(Object::Role role)
{
    if (role != Object::Geometry) {
        beginFeature();
    }
    m_objects.emplace_back(role, m_reading.geographic);
    return open(Place::Object);
}

bool MapHandler::StartObject()
{
    switch (m_places.back()) {
    case Place::Document:
        return pushObject(Object::Root);
    case Place::Features:
        return pushObject(Object::Feature);
    case Place::Geometries:
        return pushObject(Object::Geometry);
    case Place::Foreign:
    case Place::Properties:
        return open(Place::Foreign);
    case Place::Coordinates:
        return fail(m_objects.back().own.notANumber());
    case Place::Object:
        break;
    }
    switch (m_objects.back().member) {
    case Member::Geometry:
        return pushObject(Object::Geometry);
    case Member::Properties:
        m_memberBegin = static_cast<std::size_t>(m_input.offset() + 1 - m_begin);
        if (m_objects.back().role != Object::Geometry) {
            m_feature.properties = {m_memberBegin - 1, 0, {}};
            m_names[0].clear();
            m_names[1].clear();
            return open(Place::Properties);
        }
        return open(Place::Foreign);
    case Member::Type:
        return fail(Text::tr("type должен быть строкой"));
    case Member::Features:
    case Member::Geometries:
    case Member::Coordinates:
        return fail(Text::tr("ожидается список"));
    default:
        return open(Place::Foreign);
    }
}

bool MapHandler::EndObject(rapidjson::SizeType)
{
    const Place ended = m_places.back();
    m_places.pop_back();
    if (ended == Place::Object) {
        return endOfObject();
    }
    if (ended == Place::Properties) {
        m_feature.properties.end = static_cast<std::size_t>(m_input.offset() + 1 - m_begin);
    } else if (m_places.back() == Place::Properties) {
        propertyEnded(m_input.offset() + 1);
    }
    return true;
}

bool MapHandler::StartArray()
{
    if (m_places.back() == Place::Coordinates) {
        return step(m_objects.back().own.beginArray());
    }
    switch (m_places.back()) {
    case Place::Document:
        return fail(Text::tr("это не карта: ожидается объект"));
    case Place::Foreign:
    case Place::Properties:
        return open(Place::Foreign);
    case Place::Features:
    case Place::Geometries:
        return fail(Text::tr("ожидается объект"));
    default:
        break;
    }
    Object& object = m_objects.back();
    switch (object.member) {
    case Member::Type:
        return fail(Text::tr("type должен быть строкой"));
    case Member::Coordinates:
        return open(Place::Coordinates) && step(object.own.beginCoordinates());
    case Member::Geometries:
        object.own.beginParts();
        return open(Place::Geometries);
    case Member::Features:
        if (object.role != Object::Root) {
            return open(Place::Foreign);
        }
        object.hasFeatures = true;
        --m_count; // the root is a collection and no feature
        if (m_reading.keepText) {
            static_cast<void>(m_input.takeKept());
        }
        return open(Place::Features);
    case Member::Geometry:
        return fail(Text::tr("ожидается геометрия с type"));
    default:
        return open(Place::Foreign);
    }
}

bool MapHandler::EndArray(rapidjson::SizeType)
{
    if (m_places.back() == Place::Coordinates) {
        bool last = false;
        if (!step(m_objects.back().own.endArray(last))) {
            return false;
        }
        if (last) {
            m_places.pop_back();
        }
        return true;
    }
    m_places.pop_back();
    if (m_places.back() == Place::Properties) {
        propertyEnded(m_input.offset() + 1);
    }
    return true;
}

bool MapHandler::endOfObject()
{
    Object object = std::move(m_objects.back());
    m_objects.pop_back();
    if (object.role == Object::Root) {
        return endOfRoot(object);
    }
    if (object.role == Object::Feature) {
        if (object.type.empty()) {
            return fail(Text::tr("ожидается Feature, а не объект без type"));
        }
        return endOfFeature(object);
    }
    if (object.type.empty()) {
        return fail(Text::tr("ожидается геометрия с type"));
    }
    Object& parent = m_objects.back();
    if (m_places.back() == Place::Geometries) {
        parent.own.addPart(std::move(object.own));
    } else {
        parent.hasGeometry = true;
        parent.hasNullGeometry = false;
        parent.geometry.clear();
        parent.geometry.push_back(std::move(object.own));
    }
    return true;
}

bool MapHandler::endOfRoot(Object& object)
{
    m_sawMap = true;
    if (object.type.empty()) {
        return fail(Text::tr("это не карта: ожидается объект с type"));
    }
    if (object.hasFeatures != (object.type == "FeatureCollection")) {
        return fail(object.hasFeatures ? Text::tr("features бывает только у FeatureCollection")
                                       : Text::tr("у FeatureCollection нет списка features"));
    }
    if (object.hasFeatures) {
        return true;
    }
    m_feature.isBareGeometry = object.type != "Feature";
    return object.type == "Feature" ? endOfFeature(object)
                                    : step(object.own.addTo(m_feature)) && emit(m_feature);
}

bool MapHandler::endOfFeature(Object& object)
{
    if (!object.hasGeometry) {
        return fail(Text::tr("ожидается геометрия с type"));
    }
    if (!object.hasNullGeometry && !step(object.geometry.front().addTo(m_feature))) {
        return false;
    }
    return emit(m_feature);
}

bool MapHandler::emit(MapFeature& feature)
{
    feature.name = name();
    if (m_reading.keepText) {
        feature.text = m_input.takeKept() + '}';
    }
    m_reading.feature(std::move(feature));
    m_feature = MapFeature();
    if (m_reading.progress) {
        m_reading.progress(m_input.offset());
    }
    return true;
}

QString MapHandler::place() const
{
    if (m_feature.number == 0 || m_objects.empty()) {
        return {};
    }
    const bool isInFeature = m_objects.size() > 1 || m_objects.front().type == "Feature";
    const bool isCollection = m_objects.front().hasFeatures;
    return isInFeature || !isCollection
               ? Text::tr("объект %1 (%2): ").arg(QString::number(m_feature.number), name())
               : QString();
}

} // namespace veltor::tool
