// The worksheet of the whole of level 1 (87 characters) written as PDF into memory: layout,
// stroke outlines, text with the embedded writing font and compression. Loading the stroke
// models is measured apart, as the first load of a level pays for it once.
#include <benchmark/benchmark.h>

#include <QBuffer>

#include "app/stroke/Anim.h"
#include "app/worksheet/Worksheet.h"

namespace {

void BM_Worksheet_Level1(benchmark::State& state) {
    const morvel::WorksheetSource source = morvel::WorksheetSource::from_level(1);
    if (source.entries.size() != 87) {
        state.SkipWithError("level 1 does not hold 87 characters");
        return;
    }
    morvel::WorksheetOptions options;
    for (auto _ : state) {
        QBuffer buffer;
        buffer.open(QIODevice::WriteOnly);
        const ki::GSysResult<int> pages = morvel::Worksheet::write(buffer, source.entries, options);
        if (!pages.ok()) {
            state.SkipWithError(pages.message.c_str());
            return;
        }
        state.counters["pages"] = pages.value;
        state.counters["bytes"] = static_cast<double>(buffer.size());
    }
}
BENCHMARK(BM_Worksheet_Level1)->Unit(benchmark::kMillisecond);

/// The characters of level 1 gathered from their stroke files, with the model cache empty.
void BM_Worksheet_SourceLevel1(benchmark::State& state) {
    for (auto _ : state) {
        morvel::Anim::clear_cache();
        benchmark::DoNotOptimize(morvel::WorksheetSource::from_level(1));
    }
}
BENCHMARK(BM_Worksheet_SourceLevel1)->Unit(benchmark::kMillisecond);

}  // namespace
