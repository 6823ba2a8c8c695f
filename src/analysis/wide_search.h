#pragma once
/// A second opinion on pairs that mislead the first phases: repeating patterns, and scenes whose depth
/// exceeds the searches. The tiles of both views are looked for far and wide and all good places of each are
/// kept; the correction wins that most tiles can agree with.

#include <optional>
#include <vector>

#include "analysis/error_model.h"

namespace zemora {

class WideSearch {
public:
    /// Looks for the tiles in copies of the uncorrected pair. Nothing of the state changes but its working
    /// copies. Without memory for these no tile has a place.
    WideSearch(AnalysisState& state, const StereoPicture& pair, const AnalyseProgress& progress);

    /// The correction with which the tiles agree most, in pixels of the pair; its shift is the median of the
    /// places that agree. Without enough tiles there is none.
    [[nodiscard]] std::optional<Correction> best_correction() const;

    /// How well the tiles agree with a correction in pixels of the pair: the share of what all of them could
    /// say together, 0 to 1. Its shift does not matter.
    [[nodiscard]] double agreement(const Correction& correction) const;

    /// Centres the next search of the cells of phase 3 that are not valid on the places that agree with the
    /// correction, and keeps that search low: the height is known. `state.previous_width` has to be the width
    /// of the pair.
    void guide_cells(AnalysisState& state, const Correction& correction) const;

private:
    /// A place where a tile may have its match.
    struct Place {
        double dx = 0.0;  ///< Right minus left, pixels of the copy.
        double dy = 0.0;
        double likeness = 1.0;  ///< Least error of the tile over that of the place.
        ModelBasis basis{};     ///< Halfway between tile and place, where the warp moves both.
    };
    /// A tile with contrast and its places, the best one first.
    struct Tile {
        int cell = 0;  ///< Of the left view; of the right view from the number of cells on.
        std::vector<Place> places;
        double voice = 0.0;  ///< What its agreement says: little where places are many.
    };
    /// A place of a tile, and how well it agrees with a correction: 0 where none fits.
    struct Fit {
        const Place* place = nullptr;
        double agreement = 0.0;
    };

    [[nodiscard]] static std::vector<Place> find_places(const struct MeasuredPair& pair, bool left_first,
                                                        const struct TileSearch& search,
                                                        struct CellTools& tools);
    void find_tiles(const AnalysisState& state, const StereoPicture& copies, const AnalyseProgress& progress);
    [[nodiscard]] static Fit fit_of(const Tile& tile, const ModelBasis& c);
    [[nodiscard]] double agreement_of(const ModelBasis& c) const;
    [[nodiscard]] ModelBasis units() const;
    [[nodiscard]] std::optional<ModelBasis> draw_correction(class ModelSampler& sampler,
                                                            const ModelBasis& unit) const;
    [[nodiscard]] ModelBasis most_agreed() const;
    [[nodiscard]] ModelBasis refined(ModelBasis c) const;
    [[nodiscard]] double median_shift(const ModelBasis& c) const;
    [[nodiscard]] ModelBasis terms_of(const Correction& correction) const;

    ModelTerms terms_;
    double scale_ = 1.0;  ///< Pixels of the pair per pixel of the copy.
    std::vector<Tile> tiles_;
};

}  // namespace zemora
