// Collecting the objects of a folder with very many pictures.

#include <benchmark/benchmark.h>

#include <filesystem>
#include <fstream>

#include "input/image_list.h"
#include "tests/support/test_folder.h"

namespace {

using namespace zemora;

constexpr int kNames = 10'000;

/// Empty files "img00000_l.jpg", "img00000_r.jpg" and so on.
void fill(const test::TestFolder& folder) {
    for (int i = 0; i < kNames; ++i) {
        std::ofstream(folder / format_text("img%05d_%c.jpg", i / 2, i % 2 == 0 ? 'l' : 'r'));
    }
}

/// The list of one way of pairing; `write_list` also stores its names in the folder.
void build_list(benchmark::State& state) {
    const test::TestFolder folder;
    fill(folder);
    CollectOptions options;
    options.path_of_images = folder.path();
    options.input_mode = static_cast<int>(state.range(0));
    options.write_data_base = static_cast<int>(state.range(1));
    const int verbosity = 0;
    const MessageCatalogue messages(Language::english);
    KeptNotes notes(messages, verbosity);
    int count = 0;
    std::string last;
    for ([[maybe_unused]] auto turn : state) {
        const Result<ImageList> list = build_image_list(options, notes);
        count = list->count();
        last = list->right(count - 1);
    }
    const int expected = options.input_mode == 5 ? kNames - 1 : kNames / 2;
    if (count != expected || last != folder / format_text("img%05d_r.jpg", kNames / 2 - 1)) {
        state.SkipWithError("wrong list");
    }
}
BENCHMARK(build_list)
    ->ArgNames({"mode", "list"})
    ->ArgsProduct({{1, 4, 5}, {0, 2}})
    ->Unit(benchmark::kMillisecond)
    ->UseRealTime();

}  // namespace
