#pragma once

#include "GeoJsonReader.h"
#include "GeometryBuilder.h"
#include "JsonInput.h"

#include <rapidjson/rapidjson.h>

#include <string>
#include <string_view>
#include <vector>

namespace veltor::tool {

/// The handler of RapidJSON's iterative reader, which tells of a bracket before it takes it and of all else
/// afterwards. True goes on, false ends with the fault.
class MapHandler
{
public:
    MapHandler(JsonInput& input, const MapReading& reading)
        : m_input(input)
        , m_reading(reading)
    {}

    // RapidJSON's names.
    // NOLINTBEGIN(readability-identifier-naming)
    bool Null() { return scalar({}, true); }
    bool Bool(bool value) { return scalar(value ? "true" : "false"); }
    bool Int(int value) { return number(value); }
    bool Uint(unsigned value) { return number(value); }
    bool Int64(int64_t value) { return number(static_cast<double>(value)); }
    bool Uint64(uint64_t value) { return number(static_cast<double>(value)); }
    bool Double(double approximation);
    bool RawNumber(const char*, rapidjson::SizeType, bool) { return false; } // is not asked for
    bool String(const char* text, rapidjson::SizeType length, bool);
    bool Key(const char* text, rapidjson::SizeType length, bool);
    bool StartObject();
    bool EndObject(rapidjson::SizeType);
    bool StartArray();
    bool EndArray(rapidjson::SizeType);
    // NOLINTEND(readability-identifier-naming)

    [[nodiscard]] const QString& fault() const { return m_fault; }
    /// Where in the map the fault is, as far as is known: "feature 2 (well): ", or nothing.
    [[nodiscard]] QString place() const;
    [[nodiscard]] bool sawMap() const { return m_sawMap; }

private:
    /// What the innermost value that is open is to the map.
    enum class Place
    {
        Document,
        Object, // a map, feature or geometry, whose type may come last
        Features,
        Geometries,
        Coordinates,
        Properties,
        Foreign // and all within
    };

    /// The members that mean something.
    enum class Member
    {
        Foreign,
        Type,
        Features,
        Geometry,
        Geometries,
        Coordinates,
        Properties,
        Id
    };

    /// An object of the map.
    struct Object
    {
        enum Role
        {
            Root,
            Feature,
            Geometry
        };

        Object(Role itsRole, bool geographic)
            : role(itsRole)
            , own(geographic)
        {}

        Role role;
        Member member = Member::Foreign; // whose value is being read
        std::string type;
        bool hasFeatures = false;
        bool hasGeometry = false;
        bool hasNullGeometry = false;
        GeometryBuilder own;                   // of a geometry
        std::vector<GeometryBuilder> geometry; // of a feature: one or none
    };

    [[nodiscard]] static Member memberOf(std::string_view name);
    bool fail(const QString& text);
    bool step(const QString& fault) { return fault.isEmpty() || fail(fault); }
    bool number(double value);
    bool scalar(std::string_view text, bool isNull = false);
    bool scalarMember(std::string_view text, bool isNull);
    void propertyEnded(qint64 end);
    void setName(std::string_view text);
    bool open(Place place);
    bool pushObject(Object::Role role);
    bool endOfObject();
    bool endOfRoot(Object& object);
    bool endOfFeature(Object& object);
    bool emit(MapFeature& feature);
    void beginFeature();
    [[nodiscard]] QString name() const;

    JsonInput& m_input;
    const MapReading& m_reading;
    std::vector<Place> m_places{Place::Document};
    std::vector<Object> m_objects;
    QString m_fault;
    bool m_sawMap = false;

    // Of the feature being read.
    MapFeature m_feature;
    qint64 m_begin = 0;
    std::string m_names[3]; // the property that is asked for or "name"; "NAME"; the id
    int m_nameSlot = -1;    // of the property being read
    bool m_isMeasureName = false;
    std::size_t m_memberBegin = 0;
    qint64 m_count = 0;
};

} // namespace veltor::tool
