#include "report/pair_report.h"

#include <gtest/gtest.h>

#include <limits>
#include <sstream>

#include "config/voice.h"

namespace zemora {
namespace {

/// The three places that a report is told in.
struct Told : ReportSink {
    void text_line(std::string_view part) override { text += part; }
    void html_line(std::string_view part) override { html += part; }
    std::string console, text, html;
};

/// The options of a report and how much is told.
struct Settings : ReportOptions {
    int verbose_mode = 1;
};

template <class Write>
Told told(int verbose_mode, const Write& write, Language language = Language::english) {
    Told places;
    Console console;
    MessageCatalogue messages(language);
    ParameterSet parameters;
    parameters.verbose_mode = verbose_mode;
    parameters.stop_at_error = -1;
    Voice voice(console, messages, parameters);
    voice.set_report(&places);
    testing::internal::CaptureStdout();
    write(voice);
    console.flush();
    places.console = testing::internal::GetCapturedStdout();
    return places;
}

Told told_pair(const Settings& settings, const ImageReport& report, Language language = Language::english) {
    return told(
        settings.verbose_mode, [&](Notes& notes) { write_image_report(settings, report, notes); }, language);
}

bool holds(const std::string& text, const std::string& part) {
    return text.find(part) != std::string::npos;
}

void replace_all(std::string& text, std::string_view from, std::string_view to) {
    for (std::size_t at = text.find(from); at != std::string::npos; at = text.find(from, at + to.size())) {
        text.replace(at, from.size(), to);
    }
}

void replace_first(std::string& text, std::string_view from, std::string_view to) {
    text.replace(text.find(from), from.size(), to);
}

/// The words of a report up to `end` with a blank between them, without tags and rules.
std::string words_of(std::string text, const std::string& end = "=====") {
    text = text.substr(0, text.find(end));
    for (std::size_t open = text.find('<'); open != std::string::npos; open = text.find('<', open)) {
        text.replace(open, text.find('>', open) + 1 - open, " ");
    }
    replace_all(text, "&quot;", "\"");
    replace_all(text, "&#39;", "'");
    std::istringstream words(text);
    std::string joined;
    for (std::string word; words >> word;) {
        if (word.find_first_not_of('-') != std::string::npos) {
            joined += (joined.empty() ? "" : " ") + word;
        }
    }
    return joined;
}

Settings settings_of(int verbose_mode) {
    Settings settings;
    settings.verbose_mode = verbose_mode;
    settings.iterative_warp = 10;
    settings.estimate_window = 2;
    return settings;
}

const ImageReport kExample = {.status = StatusCode::success,
                              .width = 1500,
                              .height = 1000,
                              .pre_vergence_v = -0.5F,
                              .correction = {-3.25F, 0.0F, 0.0002F, 0.0201F, -0.01F, 0.0F},
                              .original_near_px = -1.0,
                              .original_far_px = 1.5,
                              .remaining = {0.004F, 0.0F, 0.0F, 0.0F, 0.0F, 0.0F},
                              .near_px = 2.5,
                              .far_px = 42.5,
                              .seconds = 7};

constexpr const char* kWholeText =
    R"(Error analysis:
---------------
Vergence preselection v-axe =   -0.50 degree  (divergent precorrection)
Mean error of height        =   -3.25 pixel   (left image upturned)
Mean error of size          =    0.02 percent (right image oversized)
Mean error of rotation      =    1.15 degree  (right image pos. rotated)
Mean error of vergence_v    =   -0.57 degree  (approx. parallel shooting axes)
Mean error of vergence_h    =    0.00 degree  (approx. equal shooting levels)
Near point disparity        =   -1.00 pixel   (near point "in" stereo window)
Far point disparity         =    1.50 pixel   (far point behind stereo window)

Stereo window after the correction:
-----------------------------------
Far point disparity      =   43 pixel  
                         =   28 Promille (image based)
Near point disparity     =    3 pixel  
                         =    2 Promille (image based)
Absolute deviation       =   40 pixel  
Relative image deviation = 1/38 of the image width
                         =   27 Promille (image based)

Output image:
-------------
Image width               = 1500 pixel  
Image height              = 1000 pixel  
Image width to height     = 1.500

A projection ratio has not been given. The resulting image shows a
width-to-height ratio of  1.50. It is assumed, that the image will be projected
with it's full width and it's relative deviation shouldn't exceed 33.33 promille
Deviation is optimal. Image is suited for both prints and projection.
Near point close behind the stereo window, favourable stereo mounting.
Far point disparity is tolerable, the audience will be grateful.
==========================================================================
Consumed CPU time for this image: 7 seconds
)";

TEST(PairReport, TellsTheSameEverywhereAndLessWithLowerVerbosity) {
    const Told normal = told_pair(settings_of(1), kExample);
    EXPECT_EQ(normal.console, kWholeText);
    EXPECT_EQ(words_of(normal.html), words_of(kWholeText));
    EXPECT_TRUE(
        normal.html.starts_with("<table border=\"0\" cellspacing=\"5\">\n<tr><td colspan=5><b>Error"));
    EXPECT_TRUE(holds(normal.html, "<tr><td></td><td>=</td><td>  27</td><td> Promille (image based)</td>"));
    const Told quiet = told_pair(settings_of(0), kExample);
    EXPECT_EQ(quiet.console + quiet.text + quiet.html, kWholeText + normal.html);
    const Told full = told_pair(settings_of(2), kExample);
    EXPECT_EQ(words_of(full.html, "<hr"), words_of(full.text));
    EXPECT_TRUE(holds(full.console,
                      "last iteration:\n----------------------------------------\nMean error of "
                      "height        =    0.00 pixel  \n"));
    EXPECT_TRUE(
        holds(full.html, "=\"comfortcalculator_en.html?far=43&dev=40&wi=1500&hei=1000&pr=0\" onclick"));
}

TEST(PairReport, StoredValuesCountAsUsedAndNoneEndTheReport) {
    const std::string end = "Used for window shift:        =   -1.00 pixel  \n";
    ImageReport report = kExample;
    report.mode = 2;
    const Told used = told_pair(settings_of(2), report);
    EXPECT_FALSE(holds(used.text, "Mean error") || holds(used.text, "upturned"));
    EXPECT_TRUE(holds(used.text, end + "\nStereo window")) << "nothing was iterated: " << used.text;
    Settings once = settings_of(2);
    once.iterative_warp = 0;
    EXPECT_FALSE(holds(told_pair(once, kExample).text, "last iteration"));
    report.mode = 0;
    report.is_analysed = false;
    const Told none = told_pair(settings_of(2), report);
    EXPECT_TRUE(none.text.ends_with(end)) << none.text;
    EXPECT_TRUE(none.console.starts_with(none.text) && holds(none.console, "image: 7 seconds\n"));
    EXPECT_TRUE(none.html.ends_with("</td></tr>\n</table><br>\n"));
}

TEST(PairReport, ViewsFromADepthMaskAreJudgedThoughTheirGeometryWasNotMeasured) {
    ImageReport report = kExample;
    report.mode = 0;
    const Told told = told_pair(settings_of(2), report);
    for (const char* part :
         {"Used for height", "Far point disparity      =", "Absolute deviation", "Image width   "}) {
        EXPECT_TRUE(holds(told.text, part)) << part << told.text;
    }
    EXPECT_FALSE(holds(told.text, "last iteration"));
    EXPECT_TRUE(holds(told.html, "comfortcalculator_en.html?far=43"));
}

TEST(PairReport, ProjectionAndCurtainsHaveTheirRowsWhereTheyAreSet) {
    Settings settings = settings_of(1);
    ImageReport report = kExample;
    report.left_curtain_px = 12;
    settings.auto_frame_floating = 2;
    EXPECT_FALSE(holds(told_pair(settings, report).text, "Curtain"));
    settings.auto_frame_floating = 6;
    settings.projection_ratio = 5;
    const std::string text = told_pair(settings, report).text;
    EXPECT_TRUE(holds(text, "left      =   12 pixel  \nCurtain on the right     =    0 pixel  \n")) << text;
    EXPECT_TRUE(holds(text, "= 1/47 of the projection width\n")) << text;
    EXPECT_TRUE(holds(text, "=   21 Promille (projection based)\n")) << text;
    report.near_px = report.far_px;
    const std::string flat = told_pair(settings, report).text;
    EXPECT_TRUE(holds(flat, "1/15000 of the image width") && holds(flat, "1/18960 of the proj")) << flat;
    report.near_px = std::numeric_limits<double>::quiet_NaN();
    report.width = report.height = 0;
    const std::string none = told_pair(settings, report).text;
    EXPECT_TRUE(holds(none, "= 1/ - of the image") && !holds(none, "nan") && !holds(none, " inf")) << none;
}

TEST(PairReport, FailureAndReserveAdviseMoreIterationsWhereThereAreMore) {
    Settings settings = settings_of(1);
    ImageReport report = kExample;
    report.status = StatusCode::no_result;
    const Told failed = told_pair(settings, report);
    EXPECT_TRUE(
        failed.console.ends_with("\n\nIf all that is correct, please try to enlarge the parameter "
                                 "IterativeWarp!\n"));
    EXPECT_TRUE(failed.console == failed.text && failed.html.ends_with("IterativeWarp!</p>\n"))
        << failed.html;
    settings.verbose_mode = 0;
    EXPECT_EQ(told_pair(settings, report).console, "");
    report.status = StatusCode::usable;
    EXPECT_TRUE(holds(told_pair(settings, report).text, "under reverse!\nTo enhance the result"));
    settings.iterative_warp = 20;
    EXPECT_TRUE(holds(told_pair(settings, report).text, "under reverse!\n====="));
    report.status = StatusCode::first_phase_failed;
    EXPECT_FALSE(holds(told_pair(settings, report).text, "IterativeWarp!"));
}

/// A checked pair 1000 pixels high.
ImageReport checked(double median_px, double most_px) {
    ImageReport report = kExample;
    report.heights = HeightCheck{81, 70, 2, 1, median_px, most_px, most_px / 10.0, 1000.0, 1.0};
    return report;
}

TEST(PairReport, RemainingHeightStandsInAllThreePlacesAtEveryVerbosity) {
    const std::string numbers = "Remaining error of height   =    0.31 pixel   ";
    const std::string remark = "(median; 95 % of the picture below 0.80 pixel of the input): good";
    const std::string line = numbers + remark + "\n";
    const ImageReport report = checked(0.31, 0.8);
    for (const int verbose : {0, 1, 2}) {
        const Told told = told_pair(settings_of(verbose), report);
        EXPECT_TRUE(holds(told.text, "Check of the result:\n--------------------\n" + line)) << told.text;
        EXPECT_TRUE(holds(told.html,
                          "<tr><td>Remaining error of height</td><td>=</td><td>   0.31</td><td> pixel  "
                          "</td><td> " +
                              remark + "</td></tr>"))
            << told.html;
        EXPECT_EQ(told.console, verbose == 0 ? line : told.text);
    }
    EXPECT_TRUE(
        holds(told_pair(settings_of(0), report, Language::german).console,
              "Verbliebener Hoehenfehler   =    0.31 Pixel   (Median; 95 % des Bildes unter 0.80 Pixel "
              "der Eingabe): gut\n"));
}

TEST(PairReport, ExchangedViewsAreAWarningInAllThreePlacesAtEveryVerbosity) {
    ImageReport report = checked(0.31, 0.8);
    report.looks_exchanged = true;
    const std::string warning =
        "Attention: left and right view may be exchanged, near and far look turned round (InverseInput "
        "exchanges the views).\n";
    for (const int verbose : {0, 1, 2}) {
        const Told told = told_pair(settings_of(verbose), report);
        EXPECT_TRUE(holds(told.text, warning)) << told.text;
        EXPECT_EQ(told.console, verbose == 0 ? told.console : told.text);
        EXPECT_TRUE(verbose > 0 || told.console.ends_with("good\n" + warning)) << told.console;
        EXPECT_TRUE(holds(told.html, "may be exchanged"));
    }
    EXPECT_TRUE(holds(told_pair(settings_of(0), report, Language::german).console,
                      "Achtung: linke und rechte Ansicht sind vielleicht vertauscht,"));
}

TEST(PairReport, RemedyAndDoubtStandBeforeTheReserve) {
    ImageReport report = checked(2.0, 4.0);
    report.status = StatusCode::usable;
    report.doubt = "Not told as success: it is not.\n";
    const Told told = told_pair(settings_of(1), report);
    EXPECT_TRUE(holds(told.text, "mounting.\n" + report.doubt + "Images will be written under reverse!\n"))
        << told.text;
    EXPECT_TRUE(holds(told.text, "input): do not use\n")) << told.text;
    EXPECT_EQ(words_of(told.html), words_of(told.text));
    const std::string quiet = told_pair(settings_of(0), report).console;
    EXPECT_TRUE(quiet.starts_with("Remaining") && quiet.ends_with("do not use\n" + report.doubt)) << quiet;
}

TEST(PairReport, AHeightThatCouldNotBeCheckedHasADash) {
    ImageReport report = checked(0.0, 0.0);
    report.heights->matched = 3;
    EXPECT_EQ(
        told_pair(settings_of(0), report).console,
        "Remaining error of height   =       - pixel   (could not be checked, 3 of 81 places were found "
        "again)\n");
    EXPECT_TRUE(holds(told_pair(settings_of(0), report).text, "belong together"));
}

TEST(SequenceReport, TellsMeanValuesWithTheirRemarks) {
    SequenceReport report = {1, {2.0F, 0.0F, 0.0F, 0.0F, 0.0F, 0.0F}, 3.0, 61};
    const auto write = [&report](Notes& notes) { write_sequence_report(report, notes); };
    const Told means = told(1, write);
    const std::string rule = std::string(74, '=') + '\n';
    EXPECT_TRUE(
        means.text.starts_with(rule + "Mean values of analysis for whole image sequence:\n" + rule +
                               "Mean error of height     =    2.00 pixel   (right image upturned)\n"));
    EXPECT_TRUE(means.text.ends_with("=    3.00 pixel   (near point behind stereo window)\n" + rule +
                                     "Consumed CPU time for this image series: 61 seconds\n"));
    EXPECT_EQ(means.console, means.text);
    EXPECT_TRUE(
        means.html.starts_with("<br><table border=\"0\" cellspacing=\"5\">\n<tr><td colspan=5><b>Mean "));
    EXPECT_TRUE(means.html.ends_with("(near point behind stereo window)</td></tr>\n</table><br>\n"))
        << means.html;
    std::string values = means.text;
    replace_first(values, rule, "");
    replace_first(values, rule, "");
    EXPECT_EQ(words_of(means.html), words_of(values));
    report.mode = 2;
    const Told german = told(1, write, Language::german);
    EXPECT_TRUE(holds(german.text, "Benutzt fuer Hoehenkorrektur:    =    2.00 Pixel  \n")) << german.text;
    EXPECT_FALSE(holds(german.text, "Nahpunktlage") || holds(german.text, "("));
}

}  // namespace
}  // namespace zemora
