#pragma once
/// What the two test images have in common: labels, memory, storing.

#include <memory>
#include <string>
#include <vector>

#include "config/messages.h"
#include "numerics/bitmap.h"
#include "numerics/result.h"
#include "render/letter_mask.h"

namespace zemora {

inline constexpr Colour kWhite{255, 255, 255};

/// The masks of labels in the default font. Fails, to be seen by the user, when the font cannot be used.
[[nodiscard]] Result<std::vector<LetterMask>> label_masks(const std::vector<std::string>& labels, int font_px,
                                                          const MessageCatalogue& messages);

/// The part of a mask whose lower left pixel is at (x, y) of a picture that lies inside it.
struct LabelPart {
    Picture ground;
    int mask_x = 0;  ///< Column of the mask that the ground begins with.
    int mask_y = 0;
    [[nodiscard]] const std::uint8_t* cover(const LetterMask& mask, int row) const {
        return mask.row(mask_y + row) + mask_x;
    }
};
[[nodiscard]] LabelPart label_part(Picture picture, const LetterMask& mask, int x, int y);

/// A bitmap of that size, black; fails for the run with `reason` when the memory is not there.
[[nodiscard]] Result<Bitmap> test_bitmap(int width, int height, const char* reason);

/// Stores as TIFF.
[[nodiscard]] Result<void> store_test_image(const Bitmap& picture, const std::string& file,
                                            const MessageCatalogue& messages);

}  // namespace zemora
