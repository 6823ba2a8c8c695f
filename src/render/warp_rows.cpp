#include "render/warp_rows.h"

#include <algorithm>
#include <array>
#include <utility>

#include "platform/cpu.h"
#include "render/warp_map_simd.h"

namespace zemora {

namespace {

constexpr int kBlock = kKernelBlock;  ///< Pixels that share one test for borders and background.
constexpr std::ptrdiff_t kLargestVectorPicture = 0x7FFFFFFF;  ///< Bytes that 32-bit offsets reach.

/// One pixel at a time in the form of the vector code.
struct SingleLane {
    using Int = std::int32_t;
    static constexpr int kLanes = 1;
    static Int all(Int value) { return value; }
    static Int steps_of_128() { return 0; }
    static Int add(Int a, Int b) { return a + b; }
    static Int subtract(Int a, Int b) { return a - b; }
    static Int multiply(Int a, Int b) { return a * b; }
    template <int bits>
    static Int shift_right(Int a) {
        return a >> bits;
    }
    template <int bits>
    static Int shift_right_logical(Int a) {
        return static_cast<Int>(static_cast<std::uint32_t>(a) >> bits);
    }
    static void store(std::int32_t* target, Int a) { *target = a; }
    static Int truncated_quotient(Int a, float divisor) {
        return static_cast<Int>(static_cast<float>(a) / divisor);
    }
    static Int rounded_quotient(Int a, float divisor) {
        const float quotient = static_cast<float>(a) / divisor;
        const auto toward_zero = static_cast<Int>(quotient);
        const Int whole = toward_zero - (static_cast<float>(toward_zero) > quotient ? 1 : 0);
        return whole + (quotient - static_cast<float>(whole) >= 0.5F ? 1 : 0);
    }
    static Int multiply_high(Int a, std::uint32_t factor, int bits) {
        return static_cast<Int>(static_cast<std::uint64_t>(static_cast<std::uint32_t>(a)) * factor >> bits);
    }
};

using MapKernel = void (*)(const MapRow& row, int count, std::int32_t* x, std::int32_t* y);

/// The chain in 32 bits where the numbers of `transform` fit, else null.
MapKernel find_map_kernel(const ViewTransform& transform, const RowKernels* kernels) {
    static constexpr std::array<MapKernel, 2> kPortable = {map_row<SingleLane, 0>, map_row<SingleLane, 1>};
    if (!transform.fits_32()) {
        return nullptr;
    }
    return kernels != nullptr ? kernels->map[transform.halving]
                              : kPortable[static_cast<std::size_t>(transform.halving)];
}

const RowKernels* usable_kernels() {
#if defined(__x86_64__)
    switch (usable_instruction_set()) {
        case InstructionSet::avx512: return &kRowKernelsAvx512;
        case InstructionSet::avx2: return &kRowKernelsAvx2;
        default: return nullptr;
    }
#else
    return nullptr;
#endif
}

/// The weights of an axis as four signed bytes, negated: 128 becomes -128.
using PackedWeights = std::array<std::int32_t, 128>;

PackedWeights pack_weights(const AxisWeights& table) {
    PackedWeights packed{};
    for (std::size_t f = 0; f < table.size(); ++f) {
        std::uint32_t word = 0;
        for (std::size_t i = 0; i < 4; ++i) {
            word |= (static_cast<std::uint32_t>(-table[f][i]) & 255U) << (8 * i);
        }
        packed[f] = static_cast<std::int32_t>(word);
    }
    return packed;
}

KernelColour kernel_colour(Colour colour) {
    return {{colour.blue, colour.green, colour.red}};
}

/// The vector code loads 16 bytes for four pixels: more than one pixel beyond the last tap.
constexpr int kSpareColumns = 2;

TapPlan tap_plan(const Sampler& sampler, ConstPicture source) {
    static const PackedWeights bicubic = pack_weights(bicubic_weights());
    static const PackedWeights bilinear = pack_weights(bilinear_weights());
    constexpr int kHalf = 32 * 256;
    const bool cubic = sampler.kernel == Kernel::bicubic;
    TapPlan plan{};
    plan.weights = cubic ? bicubic.data() : bilinear.data();
    plan.rounding = cubic ? kHalf : 0;
    plan.keeps_apart = cubic ? 1 : 0;
    plan.background = kernel_colour(sampler.background);
    plan.source = source.bits;
    plan.pitch = source.pitch;
    plan.low = kPositionUnit;
    plan.x_end = (source.width - 2 - kSpareColumns) * kPositionUnit;
    plan.y_end = (source.height - 2) * kPositionUnit;
    return plan;
}

using PieceSamples = std::array<Sample, kPiece>;
static_assert(sizeof(Sample) == 4 * sizeof(std::uint16_t));

std::uint16_t* words_of(Sample* samples) {
    return reinterpret_cast<std::uint16_t*>(samples);
}
const std::uint16_t* words_of(const Sample* samples) {
    return reinterpret_cast<const std::uint16_t*>(samples);
}

/// Whether all taps of a block of pixels lie inside the source and hold picture.
bool is_plain_block(const ViewRows& view, const std::int32_t* x, const std::int32_t* y, int count) {
    const auto [low_x, high_x] = std::minmax_element(x, x + count);
    const auto [low_y, high_y] = std::minmax_element(y, y + count);
    const int left = (*low_x >> 7) - 1;
    const int right = (*high_x >> 7) + 2;
    const int bottom = (*low_y >> 7) - 1;
    const int top = (*high_y >> 7) + 2;
    return left >= 0 && bottom >= 0 && right + kSpareColumns < view.source.width &&
           top < view.source.height && !view.background.touches(left, bottom, right, top);
}

/// The blocks of a piece whose taps may be background.
std::uint32_t find_doubtful_blocks(const ViewRows& view, const PiecePositions& positions, int blocks) {
    std::uint32_t doubtful = 0;
    for (int i = 0; i < blocks && view.background.any(); ++i) {
        std::array<std::int32_t, 4> bounds;
        view.kernels->bounds(positions.x.data() + i * kBlock, positions.y.data() + i * kBlock, bounds.data());
        const int left = std::clamp((bounds[0] >> 7) - 1, 0, view.source.width - 1);
        const int right = std::clamp((bounds[1] >> 7) + 2, left, view.source.width - 1);
        const int bottom = std::clamp((bounds[2] >> 7) - 1, 0, view.source.height - 1);
        const int top = std::clamp((bounds[3] >> 7) + 2, bottom, view.source.height - 1);
        doubtful |= view.background.touches(left, bottom, right, top) ? 1U << i : 0U;
    }
    return doubtful;
}

/// The weighted sums of 4 by 4 taps, all of them picture.
template <class Normalise>
Sample sample_plain(const AxisWeights& table, const ConstPicture& source, int x, int y,
                    const Normalise& normalise) {
    const auto& across = table[static_cast<std::size_t>(x & 127)];
    const auto& up = table[static_cast<std::size_t>(y & 127)];
    const std::uint8_t* taps = source.pixel((x >> 7) - 1, (y >> 7) - 1);
    std::array<int, kPixelBytes> sum{};
    const int a = across[0];
    const int b = across[1];
    const int d = across[2];
    const int e = across[3];
    for (std::size_t j = 0; j < up.size(); ++j, taps += source.pitch) {
        const int weight = up[j];
        for (std::size_t c = 0; c < sum.size(); ++c) {
            sum[c] += weight * (a * taps[c] + b * taps[c + 3] + d * taps[c + 6] + e * taps[c + 9]);
        }
    }
    Sample sample;
    for (std::size_t c = 0; c < sum.size(); ++c) {
        sample.value[c] = static_cast<std::uint16_t>(std::clamp(normalise(sum[c]), 0, 65535));
    }
    return sample;
}

void sample_plain_block(const ViewRows& view, const std::int32_t* x, const std::int32_t* y, int count,
                        Sample* samples) {
    if (view.sampler.kernel == Kernel::bilinear) {
        const AxisWeights& table = bilinear_weights();
        for (int i = 0; i < count; ++i) {
            samples[i] = sample_plain(table, view.source, x[i], y[i], [](int sum) { return sum >> 6; });
        }
        return;
    }
    const AxisWeights& table = bicubic_weights();
    for (int i = 0; i < count; ++i) {
        samples[i] = sample_plain(table, view.source, x[i], y[i], [](int sum) { return (sum + 32) >> 6; });
        keep_from_background(samples[i].value, view.sampler.background);
    }
}

/// Samples whose nearest pixel lies outside the source hold no picture.
void sample_block(const ViewRows& view, const std::int32_t* x, const std::int32_t* y, int count,
                  Sample* samples) {
    for (int i = 0; i < count; ++i) {
        const int column = (x[i] + 64) >> 7;
        const int row = (y[i] + 64) >> 7;
        if (column < 0 || row < 0 || column >= view.source.width || row >= view.source.height) {
            samples[i].empty = 1;
        } else {
            samples[i] = sample_pixel(view.sampler, view.source, x[i], y[i]);
        }
    }
}

void sample_piece(const ViewRows& view, const PiecePositions& positions, int count, PieceSamples& samples) {
    const Kernel kernel = view.sampler.kernel;
    const bool has_plain =
        (kernel == Kernel::bilinear || kernel == Kernel::bicubic) && !view.sampler.linear_light;
    std::uint32_t left_out = ~std::uint32_t{0};
    if (has_plain && view.kernels != nullptr) {
        const int whole = count / kBlock;
        left_out =
            view.kernels->sample(view.taps, positions.x.data(), positions.y.data(), whole,
                                 find_doubtful_blocks(view, positions, whole), words_of(samples.data())) |
            ~std::uint32_t{0} << whole;
    }
    for (int i = 0; i < count; i += kBlock, left_out >>= 1) {
        if ((left_out & 1U) == 0) {
            continue;
        }
        const int block = std::min(kBlock, count - i);
        const std::int32_t* x = positions.x.data() + i;
        const std::int32_t* y = positions.y.data() + i;
        if (has_plain && is_plain_block(view, x, y, block)) {
            sample_plain_block(view, x, y, block, samples.data() + i);
        } else {
            sample_block(view, x, y, block, samples.data() + i);
        }
    }
}

std::uint8_t rounded_byte(std::uint16_t value) {
    return static_cast<std::uint8_t>(std::min((value + 128) >> 8, 255));
}

/// Bytes of a pixel. Black gets a trace of blue and a pixel of the background colour moves by one
/// step, so that the background colour always means the absence of picture.
Colour finished_pixel(const Sample& sample, Colour background) {
    if (sample.empty != 0) {
        return background;
    }
    Colour pixel{rounded_byte(sample.value[0]), rounded_byte(sample.value[1]), rounded_byte(sample.value[2])};
    if (pixel == Colour{}) {
        pixel.blue = 1;
    }
    if (pixel == background) {
        pixel.blue = static_cast<std::uint8_t>(pixel.blue < 128 ? pixel.blue + 1 : pixel.blue - 1);
    }
    return pixel;
}

void finish_block(const Sample* samples, int count, Colour background, std::uint8_t* target) {
    for (int i = 0; i < count; ++i, target += kPixelBytes) {
        const Colour pixel = finished_pixel(samples[i], background);
        target[0] = pixel.blue;
        target[1] = pixel.green;
        target[2] = pixel.red;
    }
}

void finish_piece(const ViewRows& view, const PieceSamples& samples, int count, std::uint8_t* target) {
    const Colour background = view.sampler.background;
    std::uint32_t left_out = ~std::uint32_t{0};
    if (view.kernels != nullptr) {
        const int whole = count / kBlock;
        left_out = view.kernels->finish(words_of(samples.data()), whole, kernel_colour(background), target) |
                   ~std::uint32_t{0} << whole;
    }
    for (int i = 0; i < count; i += kBlock, left_out >>= 1) {
        if ((left_out & 1U) != 0) {
            finish_block(samples.data() + i, std::min(kBlock, count - i), background,
                         target + static_cast<std::ptrdiff_t>(i) * kPixelBytes);
        }
    }
}

}  // namespace

ViewRows::ViewRows(const ViewTransform& view_transform, const Sampler& view_sampler, ConstPicture view_source,
                   ToneLookup view_tone)
    : transform(view_transform),
      sampler(view_sampler),
      source(view_source),
      tone(std::move(view_tone)),
      background(view_source, view_sampler.background, usable_kernels()),
      kernels(view_source.pitch * view_source.height < kLargestVectorPicture ? usable_kernels() : nullptr),
      map_kernel(find_map_kernel(view_transform, usable_kernels())),
      taps(tap_plan(view_sampler, view_source)) {}

void map_piece(const ViewRows& view, int row, int first, int count, PiecePositions& positions) {
    if (view.map_kernel != nullptr) {
        view.map_kernel(map_row_of(view.transform, row, first), count, positions.x.data(),
                        positions.y.data());
        return;
    }
    for (int i = 0; i < count; ++i) {
        const Position p = view.transform.map(first + i, row);
        positions.x[static_cast<std::size_t>(i)] = static_cast<std::int32_t>(p.x);
        positions.y[static_cast<std::size_t>(i)] = static_cast<std::int32_t>(p.y);
    }
}

void warp_row(const ViewRows& view, int row, int first, int count, std::uint8_t* target) {
    PiecePositions positions;
    PieceSamples samples;
    for (int done = 0; done < count; done += kPiece) {
        const int piece = std::min(kPiece, count - done);
        map_piece(view, row, first + done, piece, positions);
        sample_piece(view, positions, piece, samples);
        view.tone.apply(samples.data(), piece, view.sampler.background);
        if (view.colours != nullptr) {
            view.colours->apply(view.is_left, samples.data(), piece);
        }
        finish_piece(view, samples, piece, target + static_cast<std::ptrdiff_t>(done) * kPixelBytes);
    }
}

}  // namespace zemora
