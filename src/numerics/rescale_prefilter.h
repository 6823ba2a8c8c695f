#pragma once
/// The triangular filter that reduces a picture by a whole factor, before the bilinear filter does the rest.

#include <array>
#include <vector>

#include "numerics/rescale.h"
#include "numerics/rescale_kernels.h"

namespace zemora::rescale_parts {

/// Triangular weights n, n-1, ..., 1 on either side of the centre. Their total n x n is brought
/// below 256 by a shift, so that row sums fit into 16 bits: 255 x n x n >> shift is at most 65025.
struct Triangle {
    int n = 1;
    int shift = 0;
    std::uint32_t total = 1;
    std::uint64_t reciprocal = 0;
    /// Weights 1, 2, ..., n, ..., 2, 1, 0 in pairs for the vector code, where there is no shift.
    std::array<std::int32_t, rescale_kernels::kLargestPlainFactor> pairs{};

    explicit Triangle(int factor);  ///< 1 to 255.
    /// The weighted sum of both directions, brought back to the range of a byte: divided by the
    /// squared total, as a product with the rounded-up reciprocal. Shifted sums are below 2^24 and
    /// the divisor is below 2^16, so that 40 bits make it exact. A total that lost bits to the shift
    /// is too small: white comes out above 255 and has to be limited.
    [[nodiscard]] std::uint8_t normalised(std::uint32_t sum) const;

    static constexpr std::uint32_t kReciprocalBits = 40;
    static constexpr std::uint32_t kLargestTotal = 255;
};

/// A reduction of `source` to `reduced`, its size by the factor of the triangle, rounded down but at least 1.
struct Prefilter {
    ConstPicture source;
    Triangle triangle;
    PictureSize reduced;
    /// Where the weights have a shift: a row of sums over the columns for each source row.
    const std::uint16_t* column_sums = nullptr;
};

/// Sums over the columns for a filter with a shift, which comes after this direction: `reduced.width` pixels
/// for each row of the source. The rows are shared out to all cores.
void sum_all_columns(const Prefilter& filter, std::uint16_t* column_sums);

/// The rows of a reduced picture, made when they are asked for; the last two are kept. Each thread has one.
class ReducedRows {
public:
    explicit ReducedRows(const Prefilter& filter);
    /// Row `j`, valid until another two rows have been asked for.
    [[nodiscard]] const std::uint8_t* row(int j);

private:
    struct Kept {
        int number = -1;
        std::vector<std::uint8_t> pixels;
    };
    void rows_first(int j, std::uint8_t* out);
    void columns_first(int j, std::uint8_t* out) const;

    const Prefilter& filter_;
    std::array<Kept, 2> kept_;
    std::size_t latest_ = 0;
    std::vector<std::uint16_t> sums_;  ///< Sums over the rows, a sample for each of the source's row.
};

}  // namespace zemora::rescale_parts
