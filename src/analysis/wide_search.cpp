#include "analysis/wide_search.h"

#include <algorithm>
#include <cmath>

#include "analysis/cell_measure.h"
#include "analysis/model_equations.h"
#include "analysis/phases.h"
#include "numerics/rounding.h"

namespace zemora {

namespace {

constexpr int kCells = kGeometryGrid * kGeometryGrid;
constexpr int kCopySide = 400;          ///< Pixels of the copy's longer side.
constexpr double kSearchWidth = 0.6;    ///< Of the copy's width, both directions together.
constexpr double kSearchHeight = 0.16;  ///< Of the copy's height.
constexpr double kAgreement = 1.2;      ///< Pixels of the copy within which a place fits a correction.
constexpr std::size_t kMostPlaces = 12;

double vertex(double before, double least, double after) {
    const double bend = before + after - 2.0 * least;
    return bend > 0.0 ? 0.5 * (before - after) / bend : 0.0;
}

struct Minimum {
    double dx = 0.0;
    double dy = 0.0;
    double error = 0.0;
};

/// Local minima whose error is near that of the least, in the order of their errors.
std::vector<Minimum> minima_of(const ErrorSurface& surface) {
    constexpr double kNear = 2.0;  // times the least error
    constexpr int kReach = 2;      // steps
    std::vector<Minimum> minima;
    for (int i = kReach; i < surface.rows() - kReach; ++i) {
        for (int j = kReach; j < surface.columns() - kReach; ++j) {
            if (surface.is_local_minimum(i, j, kReach)) {
                const double error = surface.at(i, j);
                minima.push_back(
                    {j - surface.centre_column() + vertex(surface.at(i, j - 1), error, surface.at(i, j + 1)),
                     i - surface.centre_row() + vertex(surface.at(i - 1, j), error, surface.at(i + 1, j)),
                     error});
            }
        }
    }
    std::stable_sort(minima.begin(), minima.end(),
                     [](const Minimum& a, const Minimum& b) { return a.error < b.error; });
    std::size_t count = 0;
    while (count < std::min(minima.size(), kMostPlaces) &&
           minima[count].error <= kNear * minima.front().error + 1.0) {
        ++count;
    }
    minima.resize(count);
    return minima;
}

int even(double length) {
    return static_cast<int>(length) / 2 * 2;
}

/// Whether a pair may need such a correction.
bool is_plausible(const ModelBasis& c) {
    constexpr double kMostSize = 0.04;
    constexpr double kMostAngle = 0.0873;  // radians, 5 degrees
    return std::fabs(c[1]) <= kMostSize && std::fabs(c[2]) <= kMostAngle && std::fabs(c[3]) <= kMostAngle &&
           std::fabs(c[4]) <= kMostAngle;
}

}  // namespace

std::vector<WideSearch::Place> WideSearch::find_places(const MeasuredPair& pair, bool left_first,
                                                       const TileSearch& search, CellTools& tools) {
    const ToneView& first = left_first ? pair.left : pair.right;
    const ToneView& second = left_first ? pair.right : pair.left;
    std::vector<Place> places;
    if (search_contrast(first, search) < kLeastContrast) {
        return places;
    }
    tools.correlator.correlate(first, second, pair.rule, search, tools.forward);
    const std::vector<Minimum> minima = minima_of(tools.forward);
    const double sign = left_first ? 1.0 : -1.0;
    for (const Minimum& m : minima) {
        const ModelPoint halfway{search.x + search.tile_columns / 2 + static_cast<int>(m.dx / 2.0),
                                 search.y + search.tile_rows / 2 + static_cast<int>(m.dy / 2.0), 0.0};
        places.push_back({sign * m.dx, sign * m.dy, (minima.front().error + 1.0) / (m.error + 1.0),
                          model_basis(halfway, pair.height, pair.width)});
    }
    return places;
}

void WideSearch::find_tiles(const AnalysisState& state, const StereoPicture& copies,
                            const AnalyseProgress& progress) {
    const MeasuredPair pair(state, copies);
    const int rows = 2 * pair.height / 21;
    const int columns = 2 * pair.width / 21;
    const double margin = columns / 2.5;  // as phase 3 has it
    tiles_.resize(2 * kCells);
    for_each_cell(rows > 0 && columns > 0 ? 2 * kCells : 0, CellOrder::shared_out, progress,
                  [&](int number, CellTools& tools) {
                      const int row = number % kCells / kGeometryGrid;
                      const int column = number % kGeometryGrid;
                      const TileSearch search{tile_start(column, kGeometryGrid, columns, pair.width, margin),
                                              tile_start(row, kGeometryGrid, rows, pair.height, margin),
                                              rows,
                                              columns,
                                              even(kSearchHeight * pair.height),
                                              even(kSearchWidth * pair.width)};
                      Tile& tile = tiles_[static_cast<std::size_t>(number)];
                      tile.cell = number;
                      tile.places = find_places(pair, number < kCells, search, tools);
                      const double by_chance = 2.0 * kAgreement * static_cast<double>(tile.places.size()) /
                                               (kSearchHeight * pair.height);
                      tile.voice = tile.places.empty() ? 0.0 : std::log1p(1.0 / by_chance);
                  });
    std::erase_if(tiles_, [](const Tile& tile) { return tile.places.empty(); });
}

WideSearch::WideSearch(AnalysisState& state, const StereoPicture& pair, const AnalyseProgress& progress)
    : terms_{state.options.estimate_vergence_v != setting::estimate_vergence_v::ignored,
             state.options.estimate_vergence_h != setting::estimate_vergence_h::ignored},
      scale_(static_cast<double>(std::max(pair.left.width, pair.left.height)) / kCopySide) {
    const PictureSize size{std::max(1, round_half_up(pair.left.width / scale_)),
                           std::max(1, round_half_up(pair.left.height / scale_))};
    const phases::WorkingCopies copies = phases::make_copies(state, pair, size);
    if (copies.made) {
        find_tiles(state, copies.pair, progress);
    }
}

WideSearch::Fit WideSearch::fit_of(const Tile& tile, const ModelBasis& c) {
    Fit best;
    for (const Place& place : tile.places) {
        const double r = model_residual(place.dy, place.basis, c) / kAgreement;
        const double agreement = tile.voice * (1.0 - r * r) * place.likeness;
        if (agreement > best.agreement) {
            best = {&place, agreement};
        }
    }
    return best;
}

double WideSearch::agreement_of(const ModelBasis& c) const {
    double sum = 0.0;
    double all = 0.0;
    for (const Tile& tile : tiles_) {
        sum += fit_of(tile, c).agreement;
        all += tile.voice;
    }
    return all > 0.0 ? sum / all : 0.0;
}

ModelBasis WideSearch::units() const {
    std::vector<ModelBasis> bases;
    for (const Tile& tile : tiles_) {
        bases.push_back(tile.places.front().basis);
    }
    return column_units(bases);
}

/// A correction that four tiles determine, with one place of each. Four tiles say nothing about vergence H.
std::optional<ModelBasis> WideSearch::draw_correction(ModelSampler& sampler, const ModelBasis& unit) const {
    constexpr std::size_t kSize = 4;
    NormalEquations equations(unit, solved_terms({terms_.vergence_v, false}));
    for (const std::size_t k : sampler.draw(kSize, tiles_.size())) {
        const std::vector<Place>& places = tiles_[k].places;
        const double u = sampler.next();  // squared: the better places more often
        const Place& place = places[static_cast<std::size_t>(u * u * static_cast<double>(places.size()))];
        equations.add(place.basis, place.dy, 1.0);
    }
    ModelBasis c{};
    return equations.solve(c) && is_plausible(c) ? std::optional(c) : std::nullopt;
}

/// The best of many drawn corrections are fitted to all tiles; the one with which most agree.
ModelBasis WideSearch::most_agreed() const {
    constexpr int kSamples = 6000;
    constexpr std::size_t kFinalists = 12;
    struct Candidate {
        ModelBasis c{};
        double agreement = 0.0;
    };
    const ModelBasis unit = units();
    ModelSampler sampler;
    std::vector<Candidate> candidates(1);  // no correction at all
    for (int n = 0; n < kSamples; ++n) {
        if (const std::optional<ModelBasis> c = draw_correction(sampler, unit)) {
            candidates.push_back({*c});
        }
    }
#pragma omp parallel for schedule(static)
    for (std::size_t k = 0; k < candidates.size(); ++k) {
        candidates[k].agreement = agreement_of(candidates[k].c);
    }
    const auto agrees_more = [](const Candidate& a, const Candidate& b) { return a.agreement > b.agreement; };
    std::stable_sort(candidates.begin(), candidates.end(), agrees_more);
    candidates.resize(std::min(candidates.size(), kFinalists));
    for (Candidate& candidate : candidates) {
        candidate.c = refined(candidate.c);
        candidate.agreement = agreement_of(candidate.c);
    }
    return std::min_element(candidates.begin(), candidates.end(), agrees_more)->c;
}

/// Fitted to the places that agree, as long as they agree more.
ModelBasis WideSearch::refined(ModelBasis c) const {
    constexpr int kRounds = 4;
    const ModelBasis unit = units();
    for (int round = 0; round < kRounds; ++round) {
        NormalEquations equations(unit, solved_terms(terms_));
        for (const Tile& tile : tiles_) {
            if (const Fit fit = fit_of(tile, c); fit.place != nullptr) {
                equations.add(fit.place->basis, fit.place->dy, fit.agreement);
            }
        }
        ModelBasis next{};
        if (!equations.solve(next) || !is_plausible(next) || agreement_of(next) < agreement_of(c)) {
            break;
        }
        c = next;
    }
    return c;
}

/// Of the places that agree, pixels of the copy.
double WideSearch::median_shift(const ModelBasis& c) const {
    std::vector<double> shifts;
    for (const Tile& tile : tiles_) {
        if (const Place* place = fit_of(tile, c).place) {
            shifts.push_back(place->dx);
        }
    }
    if (shifts.empty()) {
        return 0.0;
    }
    const auto middle = shifts.begin() + static_cast<std::ptrdiff_t>(shifts.size() / 2);
    std::nth_element(shifts.begin(), middle, shifts.end());
    return *middle;
}

ModelBasis WideSearch::terms_of(const Correction& v) const {
    return {v.height_px / scale_, v.size, v.rotation_rad, v.vergence_v_rad, v.vergence_h_rad};
}

std::optional<Correction> WideSearch::best_correction() const {
    if (tiles_.size() < kLeastRobustPoints) {
        return std::nullopt;
    }
    const ModelBasis c = most_agreed();
    Correction values = values_of_terms(c);
    values.height_px = static_cast<float>(values.height_px * scale_);
    values.shift_px = static_cast<float>(median_shift(c) * scale_);
    return values;
}

double WideSearch::agreement(const Correction& correction) const {
    return agreement_of(terms_of(correction));
}

void WideSearch::guide_cells(AnalysisState& state, const Correction& correction) const {
    constexpr int kLowSearch = 14;   // rows
    constexpr int kLeastSearch = 8;  // where nothing fits, which the height will hardly do by chance
    const ModelBasis c = terms_of(correction);
    for (std::size_t i = 0; i < kGeometryGrid; ++i) {
        for (std::size_t j = 0; j < kGeometryGrid; ++j) {
            if (state.valid[i][j] == 0) {
                state.search_rows[i][j] = kLeastSearch;
            }
        }
    }
    for (const Tile& tile : tiles_) {
        const auto i = static_cast<std::size_t>(tile.cell / kGeometryGrid);
        const auto j = static_cast<std::size_t>(tile.cell % kGeometryGrid);
        if (tile.cell >= kCells || state.valid[i][j] != 0) {
            continue;
        }
        if (const Place* place = fit_of(tile, c).place) {
            state.dx[i][j] = static_cast<float>(place->dx * scale_ - correction.shift_px);
            state.search_rows[i][j] = kLowSearch;
        }
    }
}

}  // namespace zemora
