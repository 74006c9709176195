// SVG path data parsing alone, over every outline and centre line of the level, in bytes of
// path data per second.
#include <benchmark/benchmark.h>
#include <ki/algo/Visitor.h>
#include <ki/math/Path.h>
#include <ki/xml/XNode.h>

#include <QString>
#include <vector>

#include "app/stroke/AdapterXNodeConst.h"
#include "bench_level.h"

namespace {

/// Every `d` attribute of the level's stroke files, in document order.
std::vector<QString> level_path_data() {
    std::vector<QString> data;
    for (const QString& name : bench::level_files()) {
        const ki::xml::XNodeResult tree = ki::xml::XNode::parse_file(name);
        if (!tree.ok()) continue;
        ki::algo::tree::Visitor<morvel::AdapterXNodeConst, const ki::xml::XNode*, ki::algo::tree::PRE_ORDER>
            visitor;
        visitor.set_callback([&data](const ki::xml::XNode* node) {
            if (node->name == "path" && node->has_attrib("d")) data.push_back(node->get_attrib_string("d"));
        });
        visitor.walk_dfs(tree.value.get());
    }
    return data;
}

void BM_Path_FromSvgPathData(benchmark::State& state) {
    static const std::vector<QString> data = level_path_data();
    if (data.empty()) {
        state.SkipWithError("no path data in the level");
        return;
    }
    int64_t chars = 0;
    for (const QString& d : data) chars += d.size();
    for (auto _ : state) {
        for (const QString& d : data) {
            ki::GSysResult<ki::math::Path> path = ki::math::Path::from_svg_path_data(d);
            if (!path.ok()) {
                state.SkipWithError(path.message.c_str());
                return;
            }
            benchmark::DoNotOptimize(path.value.get_length());
        }
    }
    // The data is ASCII: one character is one byte of the stroke file.
    state.SetBytesProcessed(state.iterations() * chars);
    state.SetItemsProcessed(state.iterations() * static_cast<int64_t>(data.size()));
    state.counters["paths"] = static_cast<double>(data.size());
}
BENCHMARK(BM_Path_FromSvgPathData)->Unit(benchmark::kMillisecond);

}  // namespace
