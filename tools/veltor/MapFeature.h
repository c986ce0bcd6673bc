#pragma once

#include <QtCore/QPointF>
#include <QtCore/QString>
#include <QtCore/QVector>

#include <string>
#include <vector>

namespace veltor::err {
class ErrorTracer;
}

namespace veltor::tool {

using Ring = QVector<QPointF>;

/// Where a feature's properties stand in its text, so that members can be put among them.
struct PropertiesPlace
{
    struct Member
    {
        std::size_t begin, end; ///< with the comma before it
        bool isMeasure;         ///< has the name of one that the tool writes
    };
    std::size_t begin = 0, end = 0; ///< both 0: there are none
    std::vector<Member> members;
};

/// One feature of a map. The first ring of a polygon is the outer one, the others are holes.
struct MapFeature
{
    qint64 number = 0; ///< in the file, from 1
    QString name;
    QString kind; ///< of its geometry, empty for none
    bool isBareGeometry = false;
    bool hasClamped = false; ///< latitudes a hair beyond a pole were taken for it
    std::vector<std::vector<Ring>> polygons;
    std::vector<Ring> lines;
    std::string text; ///< as it stands in the file, if asked for
    PropertiesPlace properties;

    [[nodiscard]] bool isMeasured() const { return !polygons.empty() || !lines.empty(); }
};

/// What is worth a word about features, in their order; the report of the whole map counts equal ones.
class Notes
{
public:
    void add(const QString& kind, const MapFeature& feature)
    {
        m_notes.push_back({kind, feature.number, feature.name});
    }
    /// Adds them as warnings about a file of this name.
    void addTo(err::ErrorTracer& errors, const QString& file) const;

private:
    struct Note
    {
        QString kind;
        qint64 number;
        QString name;
    };
    std::vector<Note> m_notes;
};

} // namespace veltor::tool
