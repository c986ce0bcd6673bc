// A tree of a million numbers to a file: token by token, through one text in memory, and by RapidJSON from
// a tree of its own. What a run takes beyond the trees is counted as "extra".

#include <veltor/json/JsonFormatter.h>

#include <QtCore/QFile>
#include <QtCore/QJsonArray>
#include <QtCore/QJsonDocument>
#include <QtCore/QJsonObject>
#include <QtCore/QTemporaryDir>

#include <benchmark/benchmark.h>

#include <rapidjson/document.h>
#include <rapidjson/filewritestream.h>
#include <rapidjson/writer.h>

#include <malloc.h>

#include <cstdio>
#include <cstdlib>
#include <random>

namespace {

using namespace veltor;

/// 20 MB: features with a name, two short attributes and a line of fifty points.
const QJsonArray& tree()
{
    static const QJsonArray features = [] {
        std::mt19937_64 random(1);
        QJsonArray result;
        for (int i = 0; i < 10000; ++i) {
            QJsonArray line;
            for (int k = 0; k < 50; ++k) {
                line.append(static_cast<double>(random() >> 11) / 9007199254740992.0 * 360.0 - 180.0);
                line.append(static_cast<double>(random() >> 11) / 9007199254740992.0 * 180.0 - 90.0);
            }
            result.append(QJsonObject{{QStringLiteral("name"), QStringLiteral("Feature %1").arg(i)},
                                      {QStringLiteral("street"), QStringLiteral("Садовая улица")},
                                      {QStringLiteral("coordinates"), line},
                                      {QStringLiteral("width"), i % 7}});
        }
        return result;
    }();
    return features;
}

QString path()
{
    static const QTemporaryDir directory;
    return directory.filePath(QStringLiteral("tree.json"));
}

/// Runs @p write on an open file and reports the size of the file.
template <typename Write>
void toFile(benchmark::State& state, Write write)
{
    (void)tree();
    for (auto _ : state) {
        QFile file(path());
        if (!file.open(QIODevice::WriteOnly)) {
            std::abort();
        }
        write(file);
        file.close();
    }
    state.counters["MB"] = static_cast<double>(QFile(path()).size()) / 1e6;
}

void writeVeltor(QFile& file)
{
    const IOPtr::deleter_type keep = [](QIODevice*) {};
    json::JsonFormatter(IOPtr(&file, keep), json::JsonFormatter::formatCompact).write(tree());
}

void Json_Qt(benchmark::State& state)
{
    toFile(state, [](QFile& file) { file.write(QJsonDocument(tree()).toJson(QJsonDocument::Compact)); });
}
BENCHMARK(Json_Qt)->Unit(benchmark::kMillisecond);

void Json_Veltor(benchmark::State& state)
{
    toFile(state, writeVeltor);
    // The peak of the heap over one more run, from the size it has before: only the formatter's own.
    malloc_trim(0);
    const auto before = mallinfo2();
    QFile file(path());
    if (!file.open(QIODevice::WriteOnly)) {
        std::abort();
    }
    writeVeltor(file);
    const auto after = mallinfo2();
    state.counters["extra_kB"] =
        static_cast<double>(after.arena + after.hblkhd - before.arena - before.hblkhd) / 1e3;
}
BENCHMARK(Json_Veltor)->Unit(benchmark::kMillisecond);

void Json_VeltorIndented(benchmark::State& state)
{
    toFile(state, [](QFile& file) {
        const IOPtr::deleter_type keep = [](QIODevice*) {};
        json::JsonFormatter(IOPtr(&file, keep), json::JsonFormatter::formatIndented).write(tree());
    });
}
BENCHMARK(Json_VeltorIndented)->Unit(benchmark::kMillisecond);

void Json_RapidJson(benchmark::State& state)
{
    rapidjson::Document document;
    document.Parse(QJsonDocument(tree()).toJson(QJsonDocument::Compact).constData());
    for (auto _ : state) {
        std::FILE* file = std::fopen(path().toLocal8Bit().constData(), "wb");
        if (file == nullptr) {
            std::abort();
        }
        char buffer[65536];
        rapidjson::FileWriteStream stream(file, buffer, sizeof buffer);
        rapidjson::Writer<rapidjson::FileWriteStream> writer(stream);
        document.Accept(writer);
        stream.Flush();
        std::fclose(file);
    }
    state.counters["MB"] = static_cast<double>(QFile(path()).size()) / 1e6;
}
BENCHMARK(Json_RapidJson)->Unit(benchmark::kMillisecond);

} // namespace
