#include "input/list_scan.h"

#include "config/text_lines.h"
#include "platform/directory_walk.h"
#include "platform/paths.h"
#include "platform/safe_file.h"

namespace zemora {

namespace {

/// What a name is compared as.
using Fold = std::string (*)(std::string_view);

std::string as_it_is(std::string_view name) {
    return std::string(name);
}

/// For lists in Windows-1252 and names in other upper and lower case.
std::string as_meant(std::string_view name) {
    return fold_case(utf8_text(name));
}

enum class Naming { other, as_it_is, reversed };

Naming naming_of(const ListLine& line, const std::string& root, const ObjectNames& object, Fold fold) {
    const std::string left = fold(join_path(root, line.left));
    const std::string right = object.right.empty() ? std::string() : fold(join_path(root, line.right));
    if (left == fold(object.left) && right == fold(object.right)) {
        return Naming::as_it_is;
    }
    const bool is_reversed = left == fold(object.right) && right == fold(object.left);
    return is_reversed ? Naming::reversed : Naming::other;
}

/// The best place so far: a line without a result ends the search.
struct Search {
    std::string_view text;
    const std::string& root;
    const ObjectNames& object;
    std::optional<LinePlace> found;
    bool is_open = false;  ///< The found line has no result.

    void look_at(std::string_view raw, std::size_t start, Fold fold) {
        ListLine line;
        if (is_open || raw.size() < kShortestListLine || raw.size() > kLongestListLine ||
            parse_list_line(raw, !object.right.empty(), line) != LineFault::none) {
            return;
        }
        const Naming naming = naming_of(line, root, object, fold);
        if (naming == Naming::other) {
            return;
        }
        is_open = line.status.empty();
        if (!found || is_open) {
            found = {start, start + line.names_end, start + raw.size(), naming == Naming::reversed};
        }
    }

    /// Only lines that hold the bare name as it is can be meant; finding those is as fast as copying.
    void run_by_bare_name() {
        const std::string bare = bare_name_of(object.left);
        std::size_t at = text.find(bare);
        while (at != std::string_view::npos && !is_open) {
            const std::size_t line_feed = at == 0 ? std::string_view::npos : text.rfind('\n', at - 1);
            const std::size_t start = line_feed == std::string_view::npos ? 0 : line_feed + 1;
            const std::size_t end = std::min(text.find('\n', at), text.size());
            for_each_line(text.substr(start, end - start), [&](std::string_view raw, std::size_t offset) {
                look_at(raw, start + offset, as_it_is);
            });
            at = text.find(bare, end);
        }
    }

    void run_over_all(Fold fold) {
        for_each_line(text, [&](std::string_view raw, std::size_t start) { look_at(raw, start, fold); });
    }
};

}  // namespace

std::optional<std::string> read_list(const std::string& path, std::string& reason) {
    const auto bytes = read_file_whole(path, reason);
    if (!bytes) {
        return std::nullopt;
    }
    return std::string(bytes->begin(), bytes->end());
}

std::optional<LinePlace> find_object(std::string_view text, const std::string& root,
                                     const ObjectNames& object) {
    Search search{text, root, object, std::nullopt, false};
    search.run_by_bare_name();
    for (const Fold fold : {as_it_is, as_meant}) {
        if (!search.found) {
            search.run_over_all(fold);
        }
    }
    return search.found;
}

}  // namespace zemora
