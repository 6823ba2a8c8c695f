// The result of one pair into its line, for short and long lists, beside a plain copy of the same file.

#include <benchmark/benchmark.h>

#include <filesystem>
#include <fstream>

#include "input/list_file.h"
#include "input/list_scan.h"
#include "platform/safe_file.h"
#include "platform/temp_folder.h"

namespace zemora {
namespace {

std::string name_of(long number, char view) {
    return format_text("trip %03ld/%c/IMG_%05ld.jpg", number / 100, view, number);
}

std::string list_text(long lines) {
    const std::string values = " OK" + values_text(empty_record());
    std::string text;
    for (long i = 0; i < lines; ++i) {
        text +=
            '"' + name_of(i, 'l') + "\"   \"" + name_of(i, 'r') + '"' + (i < lines / 2 ? values : "") + '\n';
    }
    return text;
}

void write(const std::string& path, const std::string& text) {
    (void)write_file_whole(path, std::span(reinterpret_cast<const std::uint8_t*>(text.data()), text.size()));
}

void copy_list(benchmark::State& state) {
    const std::string path = temporary_folder() + "/copied.txt";
    write(path, list_text(state.range(0)));
    std::string reason;
    for ([[maybe_unused]] auto round : state) {
        const auto text = read_list(path, reason);
        write(path, *text);
    }
}

void update_line(benchmark::State& state) {
    const std::string path = temporary_folder() + "/updated.txt";
    write(path, list_text(state.range(0)));
    const int verbosity = 1;
    const MessageCatalogue messages(Language::english);
    KeptNotes notes(messages, verbosity);
    const StoredCorrectionRecord values = empty_record();
    const long number = state.range(0) - 1;  // the last line is the slowest to find
    const std::string root = temporary_folder() + '/';
    for ([[maybe_unused]] auto round : state) {
        update_database_line(temporary_folder(), notes, path, root + name_of(number, 'l'),
                             root + name_of(number, 'r'), {"OK", &values});
    }
    std::string reason;
    const std::string text = read_list(path, reason).value_or("");
    const auto place =
        find_object(text, temporary_folder(), {root + name_of(number, 'l'), root + name_of(number, 'r')});
    if (!place ||
        text.substr(place->names_end, place->end - place->names_end) != " OK" + values_text(values)) {
        state.SkipWithError("the result does not stand in its line");
    }
}

BENCHMARK(copy_list)->Arg(100)->Arg(10'000)->Arg(100'000)->Unit(benchmark::kMicrosecond);
BENCHMARK(update_line)->Arg(100)->Arg(10'000)->Arg(100'000)->Unit(benchmark::kMicrosecond);

}  // namespace
}  // namespace zemora
