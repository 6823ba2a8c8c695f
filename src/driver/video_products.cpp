#include "driver/video_products.h"

#include <array>

#include "config/html_text.h"
#include "driver/failure.h"
#include "driver/product_names.h"
#include "driver/settings_render.h"
#include "platform/console.h"
#include "platform/paths.h"
#include "render/anaglyph.h"
#include "render/canvas.h"
#include "render/extra_output.h"

namespace zemora {

namespace {

/// A row for each `VideoOutput`.
struct VideoOutputRow {
    int video_output;
    ProductKind kind;
    int files;              ///< Of one or of each view.
    const char* ending;     ///< Behind the name; of the right view its own.
    const char* inverse;    ///< With `InverseOutput`, or of the right view.
    StereoPacking packing;  ///< Of the two views in one picture.
    ExtraFormat extra;
    BothTexts words;
};

namespace video = setting::video_output;
constexpr BothTexts kViewWords{"left image sequence or video and right image sequence or video ",
                               "Die linke und die rechte Bildfolge oder das Video "};
constexpr BothTexts kExtraWords{"extra image sequence or video ", "Die Extra-Bildfolge oder das Video "};
constexpr std::array kRows{
    VideoOutputRow{video::views, ProductKind::left, 2, "", "", StereoPacking::none, ExtraFormat::none,
                   kViewWords},
    VideoOutputRow{video::side_by_side,
                   ProductKind::stereo,
                   1,
                   "-lr",
                   "-rl",
                   StereoPacking::side_by_side,
                   ExtraFormat::none,
                   {"stereo image sequence or video ", "Die Stereo-Bildfolge oder das Video "}},
    VideoOutputRow{video::anaglyph,
                   ProductKind::anaglyph,
                   1,
                   "",
                   "",
                   StereoPacking::none,
                   ExtraFormat::none,
                   {"anaglyph image sequence or video ", "Die Anaglyphen-Bildfolge oder das Video "}},
    VideoOutputRow{video::squeezed_side_by_side, ProductKind::extra, 1, "-lrq", "-rlq",
                   StereoPacking::side_by_side, ExtraFormat::squeezed_side_by_side, kExtraWords},
    VideoOutputRow{video::above_below, ProductKind::extra, 1, "-ab", "-ba", StereoPacking::above_below,
                   ExtraFormat::above_below, kExtraWords},
    VideoOutputRow{video::squeezed_above_below, ProductKind::extra, 1, "-abq", "-baq",
                   StereoPacking::above_below, ExtraFormat::squeezed_above_below, kExtraWords},
    VideoOutputRow{video::interlaced, ProductKind::extra, 1, "-oe", "-eo", StereoPacking::rows,
                   ExtraFormat::interlaced, kExtraWords},
    VideoOutputRow{video::two_streams, ProductKind::extra, 1, "", "", StereoPacking::none, ExtraFormat::none,
                   kExtraWords},
    VideoOutputRow{video::views_in_folder, ProductKind::left, 2, "-l", "-r", StereoPacking::none,
                   ExtraFormat::none, kViewWords},
};

const VideoOutputRow* row_of(int video_output) {
    for (const VideoOutputRow& row : kRows) {
        if (row.video_output == video_output) {
            return &row;
        }
    }
    return nullptr;
}

NamedPair named_video(const VideoRun& run) {
    const ParameterSet& p = run.pipeline.parameters;
    const double ratio = static_cast<double>(run.frame.kept.width()) / run.frame.kept.height();
    return {run.left_relative,
            run.right_relative,
            ".mp4",
            ".mp4",
            !run.files.is_one_file(),
            0,
            {run.largest_deviation, projected_deviation(p, ratio, run.largest_deviation),
             run.pipeline.run.stamp, false}};
}

std::vector<OutputName> names_of(const VideoRun& run, const VideoOutputRow& row) {
    const ParameterSet& p = run.pipeline.parameters;
    const NamedPair pair = named_video(run);
    if (row.files == 2) {
        ProductNames names = view_names(p, pair, ProductKind::left, ProductKind::right);
        names.left.ending = row.ending;
        names.right.ending = row.inverse;
        return {std::move(names.left), std::move(names.right)};
    }
    OutputName name = view_names(p, pair, row.kind, row.kind).left;
    name.ending = p.inverse_output != 0 ? row.inverse : row.ending;
    return {std::move(name)};
}

bool has_two_streams(const VideoRun& run) {
    return run.pipeline.parameters.video_output == video::two_streams;
}

}  // namespace

VideoProducts::VideoProducts(VideoRun& run) : run_(run) {
    const VideoOutputRow* row = row_of(run.pipeline.parameters.video_output);
    if (row == nullptr) {
        return;
    }
    Voice& notes = run.notes;
    for (OutputName& name : names_of(run, *row)) {
        std::string reason;
        if (!make_folders(name.folder, reason)) {
            notes.print("\n Cannot create subdir: " + printable(name.folder) + " (" + reason + ")\n");
        }
        (void)run.pipeline.given_names.give_free_name(name);
        if (run.pipeline.inputs.holds(name.path())) {
            end_with(notes, Failure::of_run(printable(name.path()) + ": " +
                                            input_of_run_text(notes.messages()) + "\n"));
        }
        notes.print("   " + printable(name.path()) + '\n');
        notes.report_html(html_text(printable(name.path())) + "<br>\n");
        files_.push_back({name.path(), nullptr});
    }
}

std::vector<Bitmap> VideoProducts::compose(const Finished& finished) {
    const ParameterSet& p = run_.pipeline.parameters;
    Voice& notes = run_.notes;
    const VideoOutputRow& row = *row_of(p.video_output);
    std::vector<Bitmap> pictures;
    if (row.extra != ExtraFormat::none) {
        pictures.push_back(value_or_end(notes, compose_extra(finished, finished.frame, row.extra, notes)));
    } else if (row.kind == ProductKind::stereo) {
        pictures.push_back(value_or_end(notes, compose_stereo(finished, finished.frame, notes)).picture);
    } else if (row.kind == ProductKind::anaglyph) {
        pictures.push_back(
            value_or_end(notes, compose_anaglyph(finished, finished.frame, anaglyph_options(p), notes)));
    } else {
        const ViewLayouts layouts = view_layouts(finished, finished.frame);
        for (const View view : {View::left, View::right}) {
            pictures.push_back(compose_view(finished, layouts.of(view), view, notes));
        }
    }
    for (const Bitmap& picture : pictures) {
        if (!picture) {
            end_with(notes, Failure::out_of_memory("4289: FAILED TO ALLOCATE MEMORY FOR OUTPUT IMAGE\n"));
        }
    }
    return pictures;
}

void VideoProducts::fail(const File& file, const Failure& failure) {
    Voice& notes = run_.notes;
    const VideoOutputRow& row = *row_of(run_.pipeline.parameters.video_output);
    Failure said = failure;
    said.ends_run = false;
    said.note.waits = false;
    conclude_failure(notes, said);
    files_.clear();
    notes.print(printable(file.path) + '\n');
    end_with(notes, Failure::of_run(notes.messages().either(row.words) +
                                    notes.messages().text<Msg::main_directory_cannot_be_created>()));
}

void VideoProducts::open(File& file, const PictureSize& size) {
    const ParameterSet& p = run_.pipeline.parameters;
    const VideoOutputRow& row = *row_of(p.video_output);
    VideoWriterOptions options;
    options.path = file.path;
    options.size = size;
    options.rate = run_.output_rate;
    options.quality = p.video_quality;
    options.preset = p.video_preset;
    options.has_two_streams = has_two_streams(run_);
    options.stereo = {row.packing, p.inverse_output != 0};
    options.colours = run_.source->left_facts().colours;
    options.sound = run_.sound;
    options.metadata_source = run_.files.left;
    options.metadata_walk = run_.mounted;
    Result<std::unique_ptr<VideoWriter>> writer = VideoWriter::open(options, run_.notes);
    if (!writer) {
        fail(file, writer.failure());
    }
    file.writer = *std::move(writer);
}

void VideoProducts::write(const std::vector<Bitmap>& pictures) {
    const bool is_dual = has_two_streams(run_);
    for (std::size_t i = 0; i < files_.size(); ++i) {
        File& file = files_[i];
        if (!file.writer) {
            open(file, {pictures[i].width(), pictures[i].height()});
        }
        const ConstPicture second = is_dual ? ConstPicture(pictures[1].picture()) : ConstPicture();
        if (const Result<void> done = file.writer->add(pictures[i].picture(), is_dual ? &second : nullptr);
            !done) {
            fail(file, done.failure());
        }
    }
}

void VideoProducts::add(const Finished& finished) {
    latest_ = compose(finished);
    write(latest_);
}

void VideoProducts::repeat() {
    if (!latest_.empty()) {
        write(latest_);
    }
}

void VideoProducts::close_parts() {
    Voice& notes = run_.notes;
    for (File& file : files_) {
        if (!file.writer) {
            continue;
        }
        const Result<std::string> part = file.writer->close_part();
        if (!part) {
            conclude_failure(notes, part.failure());
        } else if (!part->empty()) {
            notes.tell_everywhere(format_text(
                notes.messages().either({"\nInterrupted: what was written so far stands in %s.\n",
                                         "\nUnterbrochen: was bis dahin geschrieben war, steht in %s.\n"}),
                printable(*part).c_str()));
        }
    }
    files_.clear();
}

void VideoProducts::close() {
    for (File& file : files_) {
        if (!file.writer) {
            continue;
        }
        if (const Result<void> done = file.writer->close(); !done) {
            fail(file, done.failure());
        }
    }
    files_.clear();
}

}  // namespace zemora
