#pragma once
/// Whether a coded video holds further views that the decoder leaves out.

#include <cstddef>
#include <cstdint>

namespace zemora {

/// Looks into packets of H.264 (MVC: ITU-T H.264 annex H) and of HEVC (MV-HEVC: ITU-T H.265 annex G), whose
/// parts stand behind start codes or behind their lengths.
class ViewsInCode {
public:
    /// `codec` is the library's number; `extradata` that of the stream, which may be null.
    ViewsInCode(int codec, const std::uint8_t* extradata, std::size_t size);
    [[nodiscard]] bool are_several(const std::uint8_t* packet, std::size_t size) const;

private:
    [[nodiscard]] bool is_further_view(const std::uint8_t* unit, std::size_t size) const;
    [[nodiscard]] bool behind_lengths(const std::uint8_t* packet, std::size_t size) const;
    [[nodiscard]] bool behind_start_codes(const std::uint8_t* packet, std::size_t size) const;

    enum class Coding { other, h264, hevc } coding_ = Coding::other;
    std::size_t length_bytes_ = 0;  ///< 0: start codes.
};

}  // namespace zemora
