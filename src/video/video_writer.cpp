#include "video/video_writer.h"

#include "config/video_codecs.h"
#include "platform/console.h"
#include "video/film_writer.h"
#include "video/stereo_flags.h"

namespace zemora {

Result<std::unique_ptr<VideoWriter>> VideoWriter::open(const VideoWriterOptions& options, Notes& notes) {
    if (!is_video_preset(options.preset)) {
        return Failure::of_run(
            format_text(notes.messages().either({"The video %s cannot be written: there is no preset %s\n",
                                                 "Das Video %s kann nicht geschrieben werden: es gibt keine "
                                                 "Voreinstellung %s\n"}),
                        printable(options.path).c_str(), options.preset.c_str()));
    }
    ContainerSettings mp4;
    mp4.encoder = h264_settings(options.quality, options.preset, options.size);
    mp4.encoder.frame_packing = frame_packing_of(options.stereo).value_or(-1);
    mp4.has_stereo_flag = has_mp4_flag(options.stereo);
    mp4.options = {{"movflags", "faststart"}};
    return FilmWriter::open(options, mp4, notes);
}

}  // namespace zemora
