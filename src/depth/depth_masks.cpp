#include "depth/depth_masks.h"

#include <algorithm>
#include <array>
#include <cmath>
#include <cstdint>
#include <cstdio>

#include "codec/encode.h"
#include "input/picture_file.h"
#include "numerics/rescale.h"
#include "numerics/rounding.h"
#include "platform/console.h"
#include "platform/paths.h"
#include "platform/temp_folder.h"

namespace zemora {

namespace {

constexpr std::int16_t kEmpty = -1;  // of a mask in the making
constexpr int kShortGap = 3;         // pixels from neighbour to neighbour that are interpolated
constexpr int kLastRound = 100;

/// A mask with places that have no value yet.
class MaskPlane {
public:
    MaskPlane(int width, int height)
        : width_(width),
          height_(height),
          values_(static_cast<std::size_t>(width) * static_cast<std::size_t>(height), kEmpty) {}

    [[nodiscard]] int width() const { return width_; }
    [[nodiscard]] int height() const { return height_; }
    [[nodiscard]] std::int16_t& at(int x, int y) {
        return values_[static_cast<std::size_t>(y) * static_cast<std::size_t>(width_) +
                       static_cast<std::size_t>(x)];
    }

private:
    int width_;
    int height_;
    std::vector<std::int16_t> values_;
};

/// The two cell centres round a pixel along one axis; both are the outermost one beyond it.
struct Centres {
    int low;
    int high;
};

Centres centres_round(int position, int step, int length) {
    const int half = step / 2;
    const int last = half + std::max(length / step - 1, 0) * step;
    const int low = std::clamp(half + (position - half) / step * step, half, last);
    return {low, position < half ? low : std::min(low + step, last)};
}

/// The vector of a pixel from those at the centres of the finest cells round it.
MotionVector vector_at(const MotionField& field, int x, int y) {
    const int step = field.fine_step();
    const Centres columns = centres_round(x, step, field.width());
    const Centres rows = centres_round(y, step, field.height());
    const int dx = x - columns.low;
    const int dy = y - rows.low;
    const auto weight = [](int a, int b) { return std::sqrt(static_cast<double>(a * a + b * b)); };
    const std::array<double, 4> weights{weight(step - dx, step - dy), weight(dx, step - dy),
                                        weight(step - dx, dy), weight(dx, dy)};
    const std::array<MotionVector, 4> vectors{
        field.at(columns.low, rows.low), field.at(columns.high, rows.low), field.at(columns.low, rows.high),
        field.at(columns.high, rows.high)};
    double sum = 0.0;
    double vx = 0.0;
    double vy = 0.0;
    for (std::size_t i = 0; i < weights.size(); ++i) {
        sum += weights[i];
        vx += weights[i] * vectors[i].x;
        vy += weights[i] * vectors[i].y;
    }
    return {round_half_up(vx / sum), round_half_up(vy / sum)};
}

/// Later pixels cover earlier ones.
void scatter(const MotionField& field, ConstPicture mask, MaskPlane& plane) {
    const int width = mask.width;
    std::vector<MotionVector> vectors(static_cast<std::size_t>(width) *
                                      static_cast<std::size_t>(mask.height));
#pragma omp parallel for
    for (int y = 0; y < mask.height; ++y) {
        for (int x = 0; x < width; ++x) {
            vectors[static_cast<std::size_t>(y) * static_cast<std::size_t>(width) +
                    static_cast<std::size_t>(x)] = vector_at(field, x, y);
        }
    }
    std::size_t index = 0;
    for (int y = 0; y < mask.height; ++y) {
        const std::uint8_t* pixel = mask.row(y);
        for (int x = 0; x < width; ++x, ++index, pixel += kPixelBytes) {
            const int to_x = x + vectors[index].x;
            const int to_y = y + vectors[index].y;
            if (to_x >= 0 && to_y >= 0 && to_x < width && to_y < mask.height) {
                plane.at(to_x, to_y) = *pixel;
            }
        }
    }
}

/// Fills the short gaps of one line of `count` values.
template <class ValueAt>
void fill_short_gaps(int count, const ValueAt& value) {
    for (int start = 0; start < count; ++start) {
        if (value(start) != kEmpty) {
            continue;
        }
        int end = start;
        while (end < count && value(end) == kEmpty) {
            ++end;
        }
        const int before = start - 1;
        const bool has_before = before >= 0;
        const bool has_behind = end < count;
        if (has_before && has_behind && end <= before + kShortGap) {
            const int a = value(before);
            const int b = value(end);
            for (int i = start; i < end; ++i) {
                const double share = static_cast<double>((b - a) * (i - before)) / (end - before);
                value(i) = static_cast<std::int16_t>(round_half_up(a + share));
            }
        } else if ((!has_before && has_behind && end <= kShortGap) ||
                   (has_before && !has_behind && before + kShortGap >= count - 1)) {
            const std::int16_t nearest = has_behind ? value(end) : value(before);
            for (int i = start; i < end; ++i) {
                value(i) = nearest;
            }
        }
        start = end;
    }
}

/// The mean of what is there in the window of 5 by 5 pixels round an empty place.
void fill_from_window(MaskPlane& plane, int x, int y) {
    constexpr int kReach = 2;
    int sum = 0;
    int count = 0;
    for (int row = std::max(y - kReach, 0); row <= std::min(y + kReach, plane.height() - 1); ++row) {
        for (int column = std::max(x - kReach, 0); column <= std::min(x + kReach, plane.width() - 1);
             ++column) {
            if (plane.at(column, row) != kEmpty) {
                sum += plane.at(column, row);
                ++count;
            }
        }
    }
    if (count > 0) {
        plane.at(x, y) = static_cast<std::int16_t>((2 * sum + count) / (2 * count));
    }
}

/// One round over the empty places, from the middle to the borders; whether there were any.
bool fill_outwards(MaskPlane& plane) {
    bool has_empty = false;
    const auto visit = [&](int x, int y) {
        if (plane.at(x, y) == kEmpty) {
            has_empty = true;
            fill_from_window(plane, x, y);
        }
    };
    const auto visit_row = [&](int y) {
        for (int x = plane.width() / 2; x >= 0; --x) {
            visit(x, y);
        }
        for (int x = plane.width() / 2; x < plane.width(); ++x) {
            visit(x, y);
        }
    };
    for (int y = plane.height() / 2; y >= 0; --y) {
        visit_row(y);
    }
    for (int y = plane.height() / 2; y < plane.height(); ++y) {
        visit_row(y);
    }
    return has_empty;
}

/// A mask that was moved on through the sequence, kept until its counterpart is there.
std::string moved_mask_file(std::int64_t index) {
    return join_path(temporary_folder(), format_text("mask_%lld.bmp", static_cast<long long>(index)));
}

/// Makes the masks between two that are there.
class BlockFiller {
public:
    BlockFiller(const DepthGapPlan& plan, const std::string& photo, const std::string& mask, Notes& notes)
        : step_(plan.photo_step), photo_(photo), mask_(mask), notes_(notes), field_(notes) {}

    /// Whether all photos of a gap and its masks can be read.
    [[nodiscard]] Result<void> check(const DepthGap& gap) {
        for (std::int64_t index = gap.first; index <= gap.last; index += step_) {
            if (const auto photo = load(photo_, index, "d1860"); !photo) {
                return photo.failure();
            }
        }
        for (const std::int64_t index : {gap.first, gap.last}) {
            if (const auto mask = load(mask_, index, "d3474"); !mask) {
                return mask.failure();
            }
        }
        return {};
    }

    /// The masks of a gap, which are stored together at its end.
    [[nodiscard]] Result<void> fill(const DepthGap& gap) {
        if (auto forward = move_forward(gap); !forward) {
            return forward;
        }
        if (auto blended = move_backward(gap); !blended) {
            return blended;
        }
        return store(gap);
    }

private:
    [[nodiscard]] Result<void> move_forward(const DepthGap& gap) {
        Result<Bitmap> mask = load(mask_, gap.first, "d3474");
        for (std::int64_t index = gap.first + step_; mask && index < gap.last; index += step_) {
            mask = moved(*mask, index - step_, index);
            if (!mask) {
                break;
            }
            if (auto kept = keep(*mask, index); !kept) {
                return kept;
            }
        }
        return mask ? Result<void>() : mask.failure();
    }

    [[nodiscard]] Result<void> move_backward(const DepthGap& gap) {
        Result<Bitmap> mask = load(mask_, gap.last, "d3474");
        for (std::int64_t index = gap.last - step_; mask && index > gap.first; index -= step_) {
            mask = moved(*mask, index + step_, index);
            if (!mask) {
                break;
            }
            const double t =
                static_cast<double>(index - gap.first) / static_cast<double>(gap.last - gap.first);
            if (auto blended = blend(*mask, index, t); !blended) {
                return blended;
            }
        }
        return mask ? Result<void>() : mask.failure();
    }

    [[nodiscard]] Result<Bitmap> load(const std::string& name, std::int64_t index, const char* number) {
        const std::string path = with_counter(name, index);
        LoadedPicture picture = load_picture(path);
        if (picture.status != LoadStatus::done) {
            return failure_of(
                number, notes_.messages().either({"Image %s not found\n", "Bild %s nicht gefunden\n"}), path);
        }
        if (size_.width == 0) {
            size_ = {picture.bitmap.width(), picture.bitmap.height()};
            tell_small_size();
        }
        if (picture.bitmap.width() != size_.width || picture.bitmap.height() != size_.height) {
            return failure_of(number,
                              notes_.messages().either({"Image %s has another size than the others\n",
                                                        "Bild %s hat eine andere Groesse als die anderen\n"}),
                              path);
        }
        return std::move(picture.bitmap);
    }

    void tell_small_size() const {
        if (size_.width < kLeastRefinedWidth) {
            notes_.print(format_text(
                notes_.messages().either(
                    {"The images are less than %d pixels wide: the edges of the masks will be coarse.\n",
                     "Die Bilder sind weniger als %d Pixel breit: die Kanten der Masken werden grob.\n"}),
                kLeastRefinedWidth));
        }
    }

    [[nodiscard]] static Failure failure_of(const char* number, const char* text, const std::string& path) {
        return Failure::of_run(number + std::string(": ") + format_text(text, printable(path).c_str()));
    }

    /// The mask of photo `from` as it looks in photo `to`.
    [[nodiscard]] Result<Bitmap> moved(const Bitmap& mask, std::int64_t from, std::int64_t to) {
        const Result<Bitmap> photo_from = load(photo_, from, "d1860");
        if (!photo_from) {
            return photo_from.failure();
        }
        const Result<Bitmap> photo_to = load(photo_, to, "d1866");
        if (!photo_to) {
            return photo_to.failure();
        }
        if (const auto found = field_.estimate_motion_field(photo_from->picture(), photo_to->picture());
            !found) {
            return found.failure();
        }
        Bitmap target = Bitmap::create(size_.width, size_.height);
        if (!target) {
            return Failure::out_of_memory("d71: FAILED TO ALLOCATE MEMORY FOR OUTPUT IMAGE\n");
        }
        project_depth_mask(field_, mask.picture(), target.picture());
        return target;
    }

    [[nodiscard]] Result<void> keep(const Bitmap& mask, std::int64_t index) const {
        const std::string file = moved_mask_file(index);
        return outcome_of(encode_and_write(mask, {PictureFormat::bmp}, file), file);
    }

    /// Done where there is no reason why a file could not be written.
    [[nodiscard]] Result<void> outcome_of(const std::string& reason, const std::string& path) const {
        if (reason.empty()) {
            return {};
        }
        return Failure::of_run(format_text(
            notes_.messages().either({"d4371: name_i=%s could not be written! (%s)\n",
                                      "d4371: name_i=%s konnte nicht geschrieben werden! (%s)\n"}),
            printable(path).c_str(), printable(reason).c_str()));
    }

    /// The mask between the one that came from before and `backward`, in place of the former.
    [[nodiscard]] Result<void> blend(const Bitmap& backward, std::int64_t index, double t) const {
        const std::string file = moved_mask_file(index);
        const LoadedPicture forward = load_picture(file);
        const Bitmap result = Bitmap::create(size_.width, size_.height);
        if (forward.status != LoadStatus::done || !result) {
            return outcome_of(forward.reason.empty() ? "no memory" : forward.reason, file);
        }
        blend_depth_masks(forward.bitmap.picture(), backward.picture(), t, result.picture());
        return keep(result, index);
    }

    /// The masks of a gap under their final names, but for those that the user has put there.
    [[nodiscard]] Result<void> store(const DepthGap& gap) const {
        for (std::int64_t index = gap.first + step_; index < gap.last; index += step_) {
            const std::string file = moved_mask_file(index);
            const std::string path = with_counter(mask_, index);
            const LoadedPicture made = load_picture(file);
            std::remove(file.c_str());
            if (made.status != LoadStatus::done) {
                return outcome_of(made.reason.empty() ? "no memory" : made.reason, file);
            }
            if (file_exists(path)) {
                continue;
            }
            auto written = outcome_of(encode_and_write(made.bitmap, options_for(path), path), path);
            if (!written) {
                return written;
            }
        }
        return {};
    }

    static EncodeOptions options_for(const std::string& path) {
        EncodeOptions options{.format = format_of_name(path), .compress = true};
        if (options.format == PictureFormat::jpeg) {
            options.quality = 100;
            options.chroma = Chroma::full;
        }
        return options;
    }

    std::int64_t step_;
    const std::string& photo_;
    const std::string& mask_;
    Notes& notes_;
    MotionField field_;
    PictureSize size_;
};

}  // namespace

void project_depth_mask(const MotionField& field, ConstPicture mask, Picture target) {
    MaskPlane plane(mask.width, mask.height);
    scatter(field, mask, plane);
#pragma omp parallel for
    for (int y = 0; y < mask.height; ++y) {
        fill_short_gaps(mask.width, [&](int x) -> std::int16_t& { return plane.at(x, y); });
    }
#pragma omp parallel for
    for (int x = 0; x < mask.width; ++x) {
        fill_short_gaps(mask.height, [&](int y) -> std::int16_t& { return plane.at(x, y); });
    }
    for (int round = 0; round < kLastRound && fill_outwards(plane); ++round) {
    }
    for (int y = 0; y < mask.height; ++y) {
        std::uint8_t* pixel = target.row(y);
        for (int x = 0; x < mask.width; ++x, pixel += kPixelBytes) {
            const int value = std::max<int>(plane.at(x, y), 0);
            std::fill_n(pixel, kPixelBytes, static_cast<std::uint8_t>(value));
        }
    }
}

void blend_depth_masks(ConstPicture forward, ConstPicture backward, double t, Picture target) {
#pragma omp parallel for
    for (int y = 0; y < target.height; ++y) {
        const std::uint8_t* a = forward.row(y);
        const std::uint8_t* b = backward.row(y);
        std::uint8_t* out = target.row(y);
        for (int i = 0; i < kPixelBytes * target.width; ++i) {
            out[i] = static_cast<std::uint8_t>(std::floor((1.0 - t) * a[i] + t * b[i] + 0.5));
        }
    }
}

Result<void> fill_depth_gaps(const DepthGapPlan& plan, const std::vector<std::string>& photos,
                             const std::vector<std::string>& masks, Notes& notes) {
    BlockFiller filler(plan, photos.front(), masks.front(), notes);
    for (const DepthGap& gap : plan.gaps) {
        if (auto checked = filler.check(gap); !checked) {
            return checked;
        }
    }
    int block = 0;
    for (const DepthGap& gap : plan.gaps) {
        notes.print(format_text(
            notes.messages().either({"*** Interpolation of depth masks block %3d, image no. %05lld to %05lld "
                                     "(please be patient)!\n",
                                     "*** Interpolation Tiefenmasken Block %3d, Bild Nr. %05lld bis %05lld "
                                     "(bitte Geduld)!\n"}),
            block++, static_cast<long long>(gap.first), static_cast<long long>(gap.last)));
        if (auto filled = filler.fill(gap); !filled) {
            return filled;
        }
    }
    return {};
}

}  // namespace zemora
