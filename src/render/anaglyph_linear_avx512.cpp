#include "render/anaglyph_linear_rows.h"

namespace zemora {

void mix_linear_avx512(const LinearBlock& block, const LinearRule& rule, LinearPlaces& places) {
    mix_linear_rows(block, rule, places);
}

}  // namespace zemora
