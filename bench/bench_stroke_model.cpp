// Building the stroke model of a character from its stroke file: XML parse, path data parse
// and lengths, with and without the process-wide cache.
#include <benchmark/benchmark.h>
#include <ki/xml/XNode.h>

#include <QBuffer>
#include <QByteArray>
#include <QFile>
#include <cstdio>
#include <vector>

#include "app/stroke/Anim.h"
#include "bench_level.h"

namespace {

using morvel::Anim;

/// Loads `file` and fails the benchmark when it does not build: a failing load is fast and
/// would flatter every figure.
bool load(benchmark::State& state, const QString& file) {
    const ki::GSysResult<Anim> result = Anim::build_from_file(file);
    if (!result.ok() || result.value.strokes.empty()) {
        state.SkipWithError(qPrintable(QStringLiteral("cannot build ") + file));
        return false;
    }
    benchmark::DoNotOptimize(result.value.strokes.data());
    return true;
}

/// One character per iteration, cycling through the level, every load starting cold.
void BM_StrokeModel_PerCharacter(benchmark::State& state) {
    const QStringList& files = bench::level_files();
    qsizetype i = 0;
    for (auto _ : state) {
        Anim::clear_cache();
        if (!load(state, files[i])) break;
        i = (i + 1) % files.size();
    }
    Anim::clear_cache();
    state.SetItemsProcessed(state.iterations());
}
BENCHMARK(BM_StrokeModel_PerCharacter)->Unit(benchmark::kMicrosecond);

/// The whole level from an empty cache, as a first pass through the list does it.
void BM_StrokeModel_WholeLevelCold(benchmark::State& state) {
    const QStringList& files = bench::level_files();
    for (auto _ : state) {
        // Emptying the cache is no part of loading: the program never does it.
        state.PauseTiming();
        Anim::clear_cache();
        state.ResumeTiming();
        for (const QString& file : files)
            if (!load(state, file)) break;
    }
    Anim::clear_cache();
    state.SetItemsProcessed(state.iterations() * files.size());
}
BENCHMARK(BM_StrokeModel_WholeLevelCold)->Unit(benchmark::kMillisecond);

/// A character already in the cache: what every later selection pays.
void BM_StrokeModel_Cached(benchmark::State& state) {
    const QStringList& files = bench::level_files();
    Anim::clear_cache();
    for (const QString& file : files)
        if (!load(state, file)) return;
    qsizetype i = 0;
    for (auto _ : state) {
        if (!load(state, files[i])) break;
        i = (i + 1) % files.size();
    }
    Anim::clear_cache();
    state.SetItemsProcessed(state.iterations());
}
BENCHMARK(BM_StrokeModel_Cached)->Unit(benchmark::kMicrosecond);

/// The XML part alone, from bytes already in memory.
void BM_StrokeModel_XmlParse(benchmark::State& state) {
    std::vector<QByteArray> documents;
    int64_t bytes = 0;
    for (const QString& name : bench::level_files()) {
        QFile file(name);
        if (!file.open(QIODevice::ReadOnly)) {
            state.SkipWithError(qPrintable(QStringLiteral("cannot read ") + name));
            return;
        }
        documents.push_back(file.readAll());
        bytes += documents.back().size();
    }
    size_t i = 0;
    for (auto _ : state) {
        QBuffer buffer(&documents[i]);
        buffer.open(QIODevice::ReadOnly);
        const ki::xml::XNodeResult tree = ki::xml::XNode::parse(buffer);
        if (!tree.ok()) {
            state.SkipWithError("XNode::parse failed");
            break;
        }
        benchmark::DoNotOptimize(tree.value.get());
        i = (i + 1) % documents.size();
    }
    state.SetItemsProcessed(state.iterations());
    state.SetBytesProcessed(state.iterations() * bytes / static_cast<int64_t>(documents.size()));
}
BENCHMARK(BM_StrokeModel_XmlParse)->Unit(benchmark::kMicrosecond);

/// The model from an already parsed tree: both walks, the path data and the lengths.
void BM_StrokeModel_BuildFromSvg(benchmark::State& state) {
    std::vector<ki::xml::XNodeResult> trees;
    for (const QString& name : bench::level_files()) {
        trees.push_back(ki::xml::XNode::parse_file(name));
        if (!trees.back().ok()) {
            state.SkipWithError(qPrintable(QStringLiteral("cannot parse ") + name));
            return;
        }
    }
    size_t i = 0;
    for (auto _ : state) {
        const ki::GSysResult<Anim> anim = Anim::build_from_svg(trees[i].value.get());
        if (!anim.ok()) {
            state.SkipWithError("Anim::build_from_svg failed");
            break;
        }
        benchmark::DoNotOptimize(anim.value.strokes.data());
        i = (i + 1) % trees.size();
    }
    state.SetItemsProcessed(state.iterations());
}
BENCHMARK(BM_StrokeModel_BuildFromSvg)->Unit(benchmark::kMicrosecond);

}  // namespace
