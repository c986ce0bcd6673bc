#pragma once

#include "JsonText.h"
#include "MapRun.h"
#include "MeasureOptions.h"

#include <vector>

namespace veltor::tool {

/// The output of one `veltor measure`: features come one after the other, in a table, as CSV (RFC 4180), as
/// JSON, or as GeoJSON with the measures among the properties. CSV and GeoJSON go out as they come unless
/// they are to be sorted; a table and JSON come at the end, when nothing can fail any more but the output.
class MeasureReport
{
public:
    explicit MeasureReport(const MeasureOptions& options);

    void add(MeasuredFeature&& feature);
    void finish();

private:
    [[nodiscard]] bool isStreamed() const;
    void order();
    void begin();
    void printRow(const MeasuredFeature& feature);
    void end();
    void printTable() const;
    void printJson() const;
    void jsonMeasures(JsonText& json, const Measures& measures, bool hasArea, bool hasLength) const;
    void csvRow(const MeasuredFeature& feature) const;
    void geoJsonRow(const MeasuredFeature& feature);
    [[nodiscard]] double inUnit(double value, bool isArea) const;
    void appendValue(std::string& text, double value) const;
    [[nodiscard]] const char* lineEnd(json::EndOfLine preset) const;

    const MeasureOptions& m_options;
    std::vector<MeasuredFeature> m_features; // but for those streamed
    Measures m_total;
    qint64 m_count = 0;
    qint64 m_measured = 0;
};

} // namespace veltor::tool
