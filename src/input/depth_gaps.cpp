#include "input/depth_gaps.h"

#include <algorithm>
#include <charconv>
#include <string_view>

#include "platform/paths.h"
#include "platform/process_end.h"

namespace zemora {

namespace {

[[noreturn]] void end_run(const Voice& voice, const std::string& text) {
    voice.print(text);
    voice.wait(WaitAbove::error);
    end_process(kExitFailure);
}

[[noreturn]] void end_run_at_first(const Voice& voice, const std::vector<std::string>& photos,
                                   const std::vector<std::string>& masks) {
    const auto first = [](const std::vector<std::string>& files) {
        return files.empty() ? std::string() : printable(files[0]);
    };
    end_run(voice, format_text(voice.messages().either(
                                   "The two FIRST images in the subdirectories must match:\n"
                                   "left:  %s\nright: %s\n",
                                   "Die beiden ERSTEN Bilder in den Unterverzeichnissen muessen zueinander "
                                   "passen:\nlinks:  %s\nrechts: %s\n"),
                               first(photos).c_str(), first(masks).c_str()));
}

/// The second name's counter, which must have as many digits as the first one's.
FrameCounter second_counter(const std::vector<std::string>& files, const FrameCounter& first,
                            const Voice& voice) {
    const FrameCounter second = file_counter(files[1], '_');
    if (second.digits != first.digits) {
        end_run(voice, format_text(voice.messages().either("Wrong length of the counter in %s\n",
                                                           "Counterlaenge falsch in %s\n"),
                                   printable(files[1]).c_str()));
    }
    return second;
}

std::int64_t last_index(const std::vector<std::string>& files, std::int64_t first, std::int64_t step) {
    return (static_cast<std::int64_t>(files.size()) - 1) * step + first;
}

/// Where the counter stands in a bare name.
struct CounterPlace {
    std::size_t start = 0;
    std::size_t length = 0;
};

bool has_digits_only(const std::string& text) {
    return !text.empty() && text.find_first_not_of("0123456789") == std::string::npos;
}

/// Between the last two separators, or behind the last one where only there digits stand or it is alone.
CounterPlace counter_place(const std::string& name, char separator) {
    const std::size_t last = name.rfind(separator);
    if (last == std::string::npos) {
        return {};
    }
    const std::size_t start = last + 1;
    const std::size_t dot = name.rfind('.');
    const CounterPlace behind{start, (dot == std::string::npos || dot < start ? name.size() : dot) - start};
    const std::size_t before = last == 0 ? std::string::npos : name.rfind(separator, last - 1);
    if (before == std::string::npos) {
        return behind;
    }
    const CounterPlace between{before + 1, last - before - 1};
    const auto counts = [&](const CounterPlace& place) {
        return has_digits_only(name.substr(place.start, place.length));
    };
    return counts(behind) && !counts(between) ? behind : between;
}

}  // namespace

FrameCounter file_counter(const std::string& path, char separator) {
    constexpr int kMostDigits = 12;  // so that products with a number of files fit
    const std::string name = bare_name_of(path);
    const CounterPlace place = counter_place(name, separator);
    FrameCounter counter{0, static_cast<int>(place.length)};
    if (counter.digits <= kMostDigits) {
        const char* start = name.data() + place.start;
        std::from_chars(start, start + place.length, counter.value);
    }
    return counter;
}

std::string with_counter(const std::string& path, std::int64_t value) {
    const std::string name = bare_name_of(path);
    const CounterPlace place = counter_place(name, '_');
    return join_path(folder_of(path),
                     name.substr(0, place.start) +
                         format_text("%0*lld", static_cast<int>(place.length), static_cast<long long>(value)) +
                         name.substr(place.start + place.length));
}

DepthGapPlan plan_depth_gaps(const std::vector<std::string>& photos, const std::vector<std::string>& masks,
                             const Voice& voice) {
    if (photos.size() < 2 || masks.size() < 2) {
        end_run_at_first(voice, photos, masks);
    }
    const FrameCounter left = file_counter(photos[0], '_');
    const FrameCounter right = file_counter(masks[0], '_');
    if (left.value != right.value || left.digits != right.digits) {
        end_run_at_first(voice, photos, masks);
    }
    const FrameCounter left_next = second_counter(photos, left, voice);
    const FrameCounter right_next = second_counter(masks, right, voice);
    DepthGapPlan plan;
    plan.first_mask = right.value;
    plan.photo_step = left_next.value - left.value;
    plan.mask_step = right_next.value - right.value;
    if (plan.photo_step <= 0 || plan.mask_step <= 0) {
        end_run_at_first(voice, photos, masks);
    }
    const std::int64_t last_photo = last_index(photos, left.value, plan.photo_step);
    const std::int64_t last_mask = last_index(masks, right.value, plan.mask_step);
    if (last_photo != last_mask) {
        voice.print(format_text(
            voice.messages().either("The two LAST images in the subdirectories must match:\n"
                                    "left index:  %lld\nright index: %lld\n",
                                    "Die beiden LETZTEN Bilder in den Unterverzeichnissen muessen zueinander "
                                    "passen:\nlinker Index:  %lld\nrechter Index: %lld\n"),
            static_cast<long long>(last_photo), static_cast<long long>(last_mask)));
        voice.wait(WaitAbove::error);
    }
    plan.missing = (right_next.value - left_next.value) / plan.photo_step;
    plan.blocks = static_cast<std::int64_t>(masks.size()) - 1;
    return plan;
}

}  // namespace zemora
