#include "input/mpo.h"

#include <algorithm>
#include <filesystem>

#include "platform/console.h"
#include "platform/paths.h"
#include "platform/safe_file.h"

namespace zemora {

namespace {

using Bytes = std::span<const std::uint8_t>;

constexpr std::array<std::uint8_t, 2> kApplicationMarker{0xFF, 0xE2};  // APP2
constexpr std::array<std::uint8_t, 4> kIdentifier{'M', 'P', 'F', 0};
constexpr std::array<std::uint8_t, 4> kLittleEndian{'I', 'I', '*', 0};
constexpr std::array<std::uint8_t, 4> kBigEndian{'M', 'M', 0, '*'};
constexpr std::array<std::uint8_t, 4> kPictureHead{0xFF, 0xD8, 0xFF, 0xE1};  // SOI and APP1
constexpr std::array<std::uint8_t, 2> kPictureEnd{0xFF, 0xD9};               // EOI
constexpr std::uint32_t kRegularDirectory = 8;
constexpr std::size_t kEntryBytes = 12;    ///< Of a directory.
constexpr std::size_t kMpEntryBytes = 16;  ///< Of a picture in the index.
constexpr std::uint32_t kMpEntryTag = 0xB002;
constexpr const char* kSupport = "(the makers of Zemora)";

/// Position of the first byte behind `text`, searched from `from` on.
std::optional<std::size_t> end_of(Bytes content, std::size_t from, Bytes text) {
    if (from > content.size()) {
        return std::nullopt;
    }
    const auto at = std::search(content.begin() + static_cast<std::ptrdiff_t>(from), content.end(),
                                text.begin(), text.end());
    if (at == content.end()) {
        return std::nullopt;
    }
    return static_cast<std::size_t>(at - content.begin()) + text.size();
}

/// Numbers in the file's byte order; 0 where the content has ended.
class NumberReader {
public:
    NumberReader(Bytes content, bool big_endian) : content_(content), big_endian_(big_endian) {}
    [[nodiscard]] std::uint32_t u16(std::size_t at) const { return number(at, 2); }
    [[nodiscard]] std::uint32_t u32(std::size_t at) const { return number(at, 4); }
    [[nodiscard]] bool holds(std::size_t at, std::size_t count) const {
        return at <= content_.size() && count <= content_.size() - at;
    }

private:
    [[nodiscard]] std::uint32_t number(std::size_t at, std::size_t count) const {
        if (!holds(at, count)) {
            return 0;
        }
        std::uint32_t value = 0;
        for (std::size_t i = 0; i < count; ++i) {
            value = value << 8U | content_[big_endian_ ? at + i : at + count - 1 - i];
        }
        return value;
    }
    Bytes content_;
    bool big_endian_;
};

/// Takes the two entries at `at` of the file.
void take_entries(MpoIndex& index, const NumberReader& numbers, std::size_t at) {
    index.size_place = numbers.holds(at, 2 * kMpEntryBytes) ? at + 4 : 0;
    index.size1 = numbers.u32(at + 4);
    index.offset1 = numbers.u32(at + 8);
    index.size2 = numbers.u32(at + kMpEntryBytes + 4);
    index.offset2 = numbers.u32(at + kMpEntryBytes + 8);
}

/// Whether the second picture can lie where the entries say.
bool is_plausible(const MpoIndex& index, std::size_t file_size) {
    const std::size_t start = index.origin + index.offset2;
    return index.offset2 > 0 && index.size2 >= kPictureHead.size() && start <= file_size &&
           index.size2 <= file_size - start;
}

/// Where the directory at `directory` says that the entries of the pictures are.
std::optional<std::size_t> entries_by_tag(const NumberReader& numbers, std::size_t origin,
                                          std::size_t directory) {
    const std::size_t count = numbers.u16(directory);
    for (std::size_t i = 0; i < count; ++i) {
        const std::size_t entry = directory + 2 + i * kEntryBytes;
        if (!numbers.holds(entry, kEntryBytes)) {
            break;
        }
        if (numbers.u16(entry) == kMpEntryTag) {
            return origin + numbers.u32(entry + 8);
        }
    }
    return std::nullopt;
}

void tell_irregular(const MpoIndex& index, Notes& notes) {
    const MessageCatalogue& messages = notes.messages();
    const char* mail = messages.either({"unforeseen error, please mail software supplier",
                                        "unerwarteter Fehler, bitte an den Hersteller schreiben"});
    if (!index.known_order) {
        notes.print(format_text("i883: %s %s\n", mail, kSupport));
        notes.print(format_text(messages.either({"i883: MP Endian not recognized, Counter = %zu\n",
                                                 "i883: MP-Bytefolge nicht erkannt, Counter = %zu\n"}),
                                index.origin + index.order_mark.size()));
        for (std::size_t i = 0; i < index.order_mark.size(); ++i) {
            notes.print(
                format_text("i883: temp[%zu] = %2X\n", i, static_cast<unsigned>(index.order_mark[i])));
        }
    }
    if (index.first_directory != kRegularDirectory) {
        notes.print(format_text("%s: %s %s\n", index.big_endian ? "i1111" : "i1108", mail, kSupport));
    }
}

void tell_missing_picture(Notes& notes) {
    const MessageCatalogue& messages = notes.messages();
    notes.print(
        format_text(messages.either({"i1217: unforeseen error, please mail details to %s\n",
                                     "i1217: unerwarteter Fehler, bitte Einzelheiten senden an %s\n"}),
                    kSupport));
    notes.print(messages.either({"i1218: jpg-header of second image couldn't be found\n",
                                 "i1218: der JPG-Kopf des zweiten Bildes wurde nicht gefunden\n"}));
    notes.wait(Severity::must_be_seen);
}

/// What became of the file that one picture is to stand in.
enum class CutResult { done, differs, failed };

CutResult keep_picture(Bytes picture, const std::string& file) {
    std::string reason;
    std::error_code error;
    if (std::filesystem::exists(std::filesystem::symlink_status(file, error))) {
        const auto old = read_file_whole(file, reason);
        return old && std::equal(old->begin(), old->end(), picture.begin(), picture.end())
                   ? CutResult::done
                   : CutResult::differs;
    }
    return make_folders(folder_of(file), reason) && write_file_whole(file, picture).empty()
               ? CutResult::done
               : CutResult::failed;
}

}  // namespace

bool is_mpo_name(const std::string& path) {
    return lower_case(suffix_of(path)) == ".mpo";
}

MpoIndex read_mpo_index(Bytes content) {
    MpoIndex index;
    const auto behind_marker = end_of(content, 0, kApplicationMarker);
    const auto origin = behind_marker ? end_of(content, *behind_marker, kIdentifier) : std::nullopt;
    if (!origin || content.size() - *origin < index.order_mark.size()) {
        return index;
    }
    index.found = true;
    index.origin = *origin;
    std::copy_n(content.begin() + static_cast<std::ptrdiff_t>(*origin), index.order_mark.size(),
                index.order_mark.begin());
    index.big_endian = index.order_mark == kBigEndian;
    index.known_order = index.big_endian || index.order_mark == kLittleEndian;
    const NumberReader numbers(content, index.big_endian);
    index.first_directory = numbers.u32(index.origin + 4);
    const std::size_t directory = index.origin + kRegularDirectory;
    // Behind the directory: its count, its entries, the offset of the next directory.
    take_entries(index, numbers, directory + 2 + kEntryBytes * numbers.u16(directory) + 4);
    if (!is_plausible(index, content.size())) {
        if (const auto named = entries_by_tag(numbers, index.origin, index.origin + index.first_directory)) {
            take_entries(index, numbers, *named);
        }
    }
    return index;
}

std::optional<MpoPictures> cut_mpo(Bytes content, Notes& notes) {
    const MpoIndex index = read_mpo_index(content);
    if (index.found) {
        tell_irregular(index, notes);
    }
    const std::size_t start2 = index.origin + index.offset2;
    if (index.found && start2 != index.size1 && notes.verbose() >= 2) {
        notes.print(notes.messages().either(
            {"   MPO image not according to spec, smart size evaluation and crossing fingers ;-)\n",
             "   MPO-Bild nicht nach der Norm, die Groesse wird abgeschaetzt, Daumen druecken ;-)\n"}));
    }
    const auto behind_head = index.found ? end_of(content, start2, kPictureHead) : std::nullopt;
    const std::size_t found2 = behind_head ? *behind_head - kPictureHead.size() : content.size();
    if (index.size2 < kPictureHead.size() || index.size2 > content.size() - found2) {
        tell_missing_picture(notes);
        return std::nullopt;
    }
    // Between the pictures there may be padding, which belongs to neither; but an offset that is too small
    // must not cost the first picture its end.
    const bool ends_there =
        start2 >= kPictureEnd.size() && std::equal(kPictureEnd.begin(), kPictureEnd.end(),
                                                   content.begin() + static_cast<std::ptrdiff_t>(start2) - 2);
    return MpoPictures{content.first(ends_there ? start2 : found2), content.subspan(found2, index.size2)};
}

MpoCutNames mpo_cut_names(const std::string& stereo, bool has_view_folders) {
    const std::string own = folder_of(stereo);
    const bool in_folder_s = has_view_folders && lower_case(bare_name_of(own)) == "s";
    const std::string base = in_folder_s ? own.substr(0, own.size() - 1) : own + '/';
    const std::string name = without_suffix(bare_name_of(stereo));
    return {base + "l/" + name + "_mpo_l.jpg", base + "r/" + name + "_mpo_r.jpg"};
}

void keep_cut_pictures(const MpoPictures& pictures, const MpoCutNames& names, Notes& notes) {
    const MessageCatalogue& messages = notes.messages();
    const auto keep = [&](Bytes picture, const std::string& file, const std::string& failure) {
        const CutResult result = keep_picture(picture, file);
        if (result == CutResult::differs) {
            notes.print(format_text(
                messages.either(
                    {"   The file %s is not from this mpo-file and stays as it is.\n",
                     "   Die Datei %s ist nicht aus dieser mpo-Datei und bleibt, wie sie ist.\n"}),
                printable(file).c_str()));
        } else if (result == CutResult::failed) {
            notes.print(failure);
            notes.wait(Severity::must_be_seen);
        }
    };
    keep(pictures.left, names.left,
         messages.text<Msg::img_input_left_file_create_failed>(printable(names.left)));
    keep(pictures.right, names.right,
         messages.text<Msg::img_input_right_file_create_failed>(printable(names.right)));
}

}  // namespace zemora
