#include "driver/pair_files.h"

#include "driver/viewers.h"
#include "input/moved_files.h"

namespace zemora {

namespace {

/// With the side that each file has by its name, also after an exchange by the user.
std::vector<SidedFile> sided_files(const Pipeline& pipeline, const PairRun& pair) {
    if (!pipeline.list.two_files) {
        return {{pair.files.stereo, FileSide::stereo}};
    }
    const bool exchanged = pair.exchanged && exchanges_files(pipeline);
    return {{pair.files.left, exchanged ? FileSide::right : FileSide::left},
            {pair.files.right, exchanged ? FileSide::left : FileSide::right}};
}

}  // namespace

void rename_refused(const Pipeline& pipeline, const PairRun& pair) {
    const ParameterSet& p = pipeline.parameters;
    if (p.input_mode == setting::input_mode::view_folders && p.rename_refused != 0) {
        rename_refused_files(p.rename_refused, pair.notes, sided_files(pipeline, pair));
    }
}

void move_quit_pair(const Pipeline& pipeline, const PairRun& pair) {
    move_quit_files(pair.notes, sided_files(pipeline, pair));
}

}  // namespace zemora
