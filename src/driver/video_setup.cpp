// The sources of a film, and which of its frames are measured and mounted.

#include <algorithm>
#include <cmath>
#include <optional>

#include "driver/failure.h"
#include "driver/settings_input.h"
#include "driver/video_run.h"
#include "input/file_selection.h"
#include "input/pair_reader.h"
#include "numerics/rounding.h"
#include "platform/paths.h"
#include "video/sound_alignment.h"
#include "video/sound_track.h"

namespace zemora {

namespace {

void take_files(VideoRun& run) {
    const ImageList& list = run.pipeline.list;
    const ParameterSet& p = run.pipeline.parameters;
    const PairFiles files = files_of(list, 0);
    run.files = list.two_files ? FilmFiles{files.left, files.right, p.stereo_image_input}
                               : FilmFiles{files.stereo, "", p.stereo_image_input};
    run.left_relative = relative_to(list.left(0), p.path_of_images);
    run.right_relative = relative_to(list.right(0), p.path_of_images);
}

[[noreturn]] void refuse_sources(VideoRun& run, const Failure& failure) {
    Voice& notes = run.notes;
    Failure said = failure;
    said.ends_run = false;
    said.note.waits = false;
    conclude_failure(notes, said);
    const MessageCatalogue& messages = notes.messages();
    const std::string left = printable(run.files.left);
    end_with(notes,
             Failure::of_run(run.files.is_one_file() ? messages.text<Msg::main_avi_file_open_failed>(left)
                                                     : messages.text<Msg::main_avi_files_open_failed>(
                                                           left, printable(run.files.right))));
}

void open_sources(VideoRun& run) {
    Result<std::unique_ptr<FrameSource>> source = FrameSource::open(run.files, run.notes);
    if (!source) {
        refuse_sources(run, source.failure());
    }
    run.source = *std::move(source);
    run.frames = run.source->count();
}

/// What the settings ask for and films do not have so far: nobody shall get another film than wished.
void refuse_missing_ways(const VideoRun& run) {
    struct Way {
        const char* setting;
        bool is_wanted;
    };
    const ParameterSet& p = run.pipeline.parameters;
    const Way ways[] = {
        {"VideoContainer = 1", p.video_container == 1 && p.video_output != setting::video_output::none},
        {"VideoOutput = 10", p.video_output == setting::video_output::panorama},
        {"InterlacedMode", p.interlaced_mode != setting::interlaced_mode::progressive},
        {"FlickerFilter", p.flicker_filter != 0},
        {"DeshakeMethod", p.deshake_method != setting::deshake_method::none},
        {"StereoImageInput = 5, 6", holds_depth_mask(p.stereo_image_input)},
    };
    for (const Way& way : ways) {
        if (way.is_wanted) {
            end_with(run.notes,
                     Failure::of_run(format_text(
                         run.notes.messages().either(
                             {"%s: this version does not do that with films. Please leave it out.\n",
                              "%s: Das macht diese Version mit Filmen nicht. Bitte weglassen.\n"}),
                         way.setting)));
        }
    }
}

/// How far the sound of the views lies apart, and what is left of that when the frames are shifted.
void tell_alignment(const SoundOffset& found, Notes& notes) {
    constexpr double kMilliseconds = 1000.0;
    constexpr double kNothing = 0.05;  // milliseconds, what the texts show
    const MessageCatalogue& messages = notes.messages();
    const double delay = std::fabs(found.seconds) * kMilliseconds;
    if (found.frames != 0) {
        notes.print('\n' + messages.text<Msg::video_previewer_alignment_corrected>(found.frames) + '\n');
    }
    if (delay < kNothing) {
        notes.print(messages.text<Msg::video_previewer_no_delay>(0) + '\n');
        return;
    }
    notes.print((found.seconds < 0.0 ? messages.text<Msg::video_previewer_delay_left_before>(0, delay)
                                     : messages.text<Msg::video_previewer_delay_right_before>(0, delay)) +
                '\n');
    const double left = std::fabs(found.residual_seconds) * kMilliseconds;
    if (left < kNothing) {
        notes.print(messages.text<Msg::video_previewer_no_delay_after>(found.frames) + '\n');
    } else {
        notes.print((found.residual_seconds < 0.0
                         ? messages.text<Msg::video_previewer_delay_left_after>(found.frames, left)
                         : messages.text<Msg::video_previewer_delay_right_after>(found.frames, left)) +
                    '\n');
    }
    notes.wait(Severity::information);
}

/// The sound of the first ten minutes of the range.
std::optional<SoundEnvelope> envelope_of(const std::string& file, const VideoRun& run) {
    constexpr double kSeconds = 600.0;
    Result<std::unique_ptr<SoundTrack>> track = SoundTrack::open(file, run.notes);
    if (!track) {
        return std::nullopt;
    }
    const double rate = run.source->left_facts().rate.value();
    const double start = run.pipeline.parameters.first_frame_index / rate;
    const double length = run.frames / rate - start;
    return sound_envelope(**track, start, std::clamp(length, 0.0, kSeconds));
}

/// The offset between the recordings, by their sound.
int aligned_offset(VideoRun& run) {
    const std::optional<SoundEnvelope> left = envelope_of(run.files.left, run);
    const std::optional<SoundEnvelope> right = envelope_of(run.files.right, run);
    const std::optional<SoundOffset> found =
        left && right ? find_sound_offset(*left, *right, run.source->left_facts().rate) : std::nullopt;
    if (!found) {
        run.notes.tell_everywhere(run.notes.messages().either(
            {"AutoFrameOffset: the sound of both videos has nothing in common that is sure. The frames stay "
             "as "
             "they are.\n",
             "AutoFrameOffset: Der Ton beider Videos hat nichts sicher Gemeinsames. Die Frames bleiben, wie "
             "sie sind.\n"}));
        return 0;
    }
    tell_alignment(*found, run.notes);
    return found->frames;
}

void find_offset(VideoRun& run) {
    const ParameterSet& p = run.pipeline.parameters;
    const bool by_sound = p.auto_frame_offset == 1 && !run.files.is_one_file();
    run.offset = by_sound ? aligned_offset(run) : p.frame_offset;
    run.source->set_offset(run.offset);
}

/// A rate that was written with a few digits, as the fraction that it stands for.
Rational rate_of(double frames_a_second) {
    constexpr int kThousand = 1000;
    constexpr int kNtsc = 1001;
    constexpr double kNear = 0.005;
    const int whole = round_half_up(frames_a_second * kNtsc / kThousand);
    if (whole > 0 && std::fabs(whole * static_cast<double>(kThousand) / kNtsc - frames_a_second) < kNear &&
        std::fabs(whole - frames_a_second) >= kNear) {
        return {whole * kThousand, kNtsc};
    }
    return {round_half_up(frames_a_second * kThousand), kThousand};
}

/// `VideoFramerate`, or that of the input.
void find_output_rate(VideoRun& run) {
    constexpr double kLeastRate = 0.1;
    const ParameterSet& p = run.pipeline.parameters;
    const Rational input = run.source->left_facts().rate;
    if (p.video_framerate >= kLeastRate) {
        run.output_rate = rate_of(p.video_framerate);
        return;
    }
    run.output_rate = {input.num, input.den * std::max(1, std::abs(p.frame_increment))};
    if (run.notes.verbose() > 1) {
        run.notes.print(
            format_text(run.notes.messages().either(
                            {"VideoFramerate has been set to the value from the input avi = %g frames/sec\n",
                             "VideoFramerate wurde auf den Wert der Eingabe gesetzt = %g Bilder/s\n"}),
                        run.output_rate.value()));
    }
}

/// With an offset some frames have no partner.
void find_ranges(VideoRun& run) {
    const ParameterSet& p = run.pipeline.parameters;
    int first = p.first_frame_index;
    int last = p.last_frame_index;
    int first_analysed = p.start_for_analyse;
    int last_analysed = p.end_for_analyse;
    if (run.offset < 0) {
        first = std::max(first, -run.offset);
        first_analysed = std::max(first_analysed, -run.offset);
    } else {
        last = std::min(last, run.frames - 1 - run.offset);
        last_analysed = std::min(last_analysed, run.frames - 1 - run.offset);
    }
    run.mounted = {first, std::min(last + 1, run.frames), p.frame_increment};
    run.analysed = {first_analysed, std::min(last_analysed + 1, run.frames), p.analyse_increment};
    if (run.frames < first_analysed || run.analysed.count() == 0) {
        end_with(run.notes,
                 Failure::of_run(run.notes.messages().text<Msg::main_no_image_analysed_start_too_high>() +
                                 format_text("%d\n", p.start_for_analyse)));
    }
}

/// The sound stays in step only where the frames keep their pace.
bool keeps_pace(const VideoRun& run) {
    constexpr double kParts = 500.0;
    const ParameterSet& p = run.pipeline.parameters;
    const int stride = std::max(1, std::abs(p.frame_increment));
    return round_half_up(run.output_rate.value() * kParts * stride) ==
           round_half_up(run.source->left_facts().rate.value() * kParts);
}

void find_sound(VideoRun& run) {
    namespace source = setting::audio_source;
    const ParameterSet& p = run.pipeline.parameters;
    const bool is_right = p.audio_source == source::right && !run.files.is_one_file();
    const VideoFacts& facts = is_right ? run.source->right_facts() : run.source->left_facts();
    run.sound = {};
    if (p.audio_source == source::silence) {
        run.sound.source = SoundWish::Source::silence;
    } else if (p.audio_source != source::none && facts.has_sound) {
        if (!keeps_pace(run)) {
            const MessageCatalogue& messages = run.notes.messages();
            if (run.notes.verbose() > 0) {
                run.notes.print(
                    messages.text<Msg::video_source_frame_rates_differ>(printable(run.files.left)) +
                    messages.text<Msg::video_source_input_frame_rate>(facts.rate.value()) +
                    messages.text<Msg::video_source_output_frame_rate>(run.output_rate.value()));
            }
            run.notes.wait(Severity::information);
            return;
        }
        run.sound.source = SoundWish::Source::file;
        run.sound.file = is_right ? run.files.right : run.files.left;
        run.sound.walk = run.mounted;
        if (is_right) {
            run.sound.walk.first += run.offset;
            run.sound.walk.end += run.offset;
        }
        run.sound.input_rate = facts.rate;
    }
}

/// The turn that a setting names; -1 and an unset one take that of the file, as for photos.
int turn_of(int wanted, bool is_given, const VideoFacts& facts) {
    return wanted == setting::rot_mir_input_left::by_exif || !is_given ? facts.rot_mir : wanted;
}

void find_orders(VideoRun& run) {
    const ParameterSet& p = run.pipeline.parameters;
    ViewOrders& orders = run.orders;
    orders.exchanged = run.files.is_one_file() && p.inverse_input == setting::inverse_input::exchanged &&
                       !holds_depth_mask(p.stereo_image_input);
    const bool is_given = p.given.contains("RotMirInputLeft") || p.given.contains("RotMirInputRight") ||
                          p.rot_mir_input_left != 0 || p.rot_mir_input_right != 0;
    orders.rot_mir_left = turn_of(p.rot_mir_input_left, is_given, run.source->left_facts());
    orders.rot_mir_right = turn_of(p.rot_mir_input_right, is_given, run.source->right_facts());
    if (p.pre_settings == 1) {
        orders.has_pre_selection = true;
        orders.pre_selection = pre_selection_of(p);
    }
}

}  // namespace

void set_up_video(VideoRun& run) {
    take_files(run);
    open_sources(run);
    refuse_missing_ways(run);
    find_offset(run);
    find_output_rate(run);
    find_ranges(run);
    find_sound(run);
    find_orders(run);
    run.series.resize(run.frames);
    run.series.analysed = run.analysed;
}

}  // namespace zemora
