#include "input/depth_gaps.h"

#include <charconv>

#include "platform/console.h"
#include "platform/paths.h"

namespace zemora {

namespace {

Failure first_do_not_match(const MessageCatalogue& messages, const std::vector<std::string>& photos,
                           const std::vector<std::string>& masks) {
    const auto first = [](const std::vector<std::string>& files) {
        return files.empty() ? std::string() : printable(files[0]);
    };
    return Failure::of_run(
        format_text(messages.either({"The two FIRST images in the subdirectories must match:\n"
                                     "left:  %s\nright: %s\n",
                                     "Die beiden ERSTEN Bilder in den Unterverzeichnissen muessen zueinander "
                                     "passen:\nlinks:  %s\nrechts: %s\n"}),
                    first(photos).c_str(), first(masks).c_str()));
}

/// The counters of all names, which must have as many digits as the first one's.
Result<std::vector<std::int64_t>> counters_of(const std::vector<std::string>& files,
                                              const MessageCatalogue& messages) {
    const int digits = file_counter(files[0], '_').digits;
    std::vector<std::int64_t> counters;
    for (const std::string& file : files) {
        const FrameCounter counter = file_counter(file, '_');
        if (counter.digits != digits) {
            return Failure::of_run(format_text(
                messages.either({"Wrong length of the counter in %s\n", "Counterlaenge falsch in %s\n"}),
                printable(file).c_str()));
        }
        counters.push_back(counter.value);
    }
    return counters;
}

/// The gaps between the masks. Each mask must come behind the one before it, at the counter of a photo.
Result<std::vector<DepthGap>> gaps_between(const std::vector<std::int64_t>& counters, std::int64_t step,
                                           const std::vector<std::string>& masks,
                                           const MessageCatalogue& messages) {
    std::vector<DepthGap> gaps;
    for (std::size_t i = 1; i < counters.size(); ++i) {
        const std::int64_t distance = counters[i] - counters[i - 1];
        if (distance <= 0 || distance % step != 0) {
            return Failure::of_run(
                format_text(messages.either({"The depth mask %s fits none of the images.\n",
                                             "Die Tiefenmaske %s passt zu keinem der Bilder.\n"}),
                            printable(masks[i]).c_str()));
        }
        if (distance > step) {
            gaps.push_back({counters[i - 1], counters[i]});
        }
    }
    return gaps;
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
    return join_path(folder_of(path), name.substr(0, place.start) +
                                          format_text("%0*lld", static_cast<int>(place.length),
                                                      static_cast<long long>(value)) +
                                          name.substr(place.start + place.length));
}

Result<DepthGapPlan> plan_depth_gaps(const std::vector<std::string>& photos,
                                     const std::vector<std::string>& masks, Notes& notes) {
    const MessageCatalogue& messages = notes.messages();
    if (photos.size() < 2 || masks.size() < 2 ||
        file_counter(photos[0], '_').digits != file_counter(masks[0], '_').digits) {
        return first_do_not_match(messages, photos, masks);
    }
    const auto left_counters = counters_of(photos, messages);
    if (!left_counters) {
        return left_counters.failure();
    }
    const auto right_counters = counters_of(masks, messages);
    if (!right_counters) {
        return right_counters.failure();
    }
    const std::vector<std::int64_t>& left = *left_counters;
    const std::vector<std::int64_t>& right = *right_counters;
    const std::int64_t step = left[1] - left[0];
    if (left[0] != right[0] || step <= 0 || right[1] <= right[0]) {
        return first_do_not_match(messages, photos, masks);
    }
    auto gaps = gaps_between(right, step, masks, messages);
    if (!gaps) {
        return gaps.failure();
    }
    if (left.back() != right.back()) {
        notes.print(format_text(
            messages.either({"The two LAST images in the subdirectories must match:\n"
                             "left index:  %lld\nright index: %lld\n",
                             "Die beiden LETZTEN Bilder in den Unterverzeichnissen muessen zueinander "
                             "passen:\nlinker Index:  %lld\nrechter Index: %lld\n"}),
            static_cast<long long>(left.back()), static_cast<long long>(right.back())));
        notes.wait(Severity::error);
    }
    return DepthGapPlan{step, *std::move(gaps)};
}

}  // namespace zemora
