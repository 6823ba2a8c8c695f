#include "config/help_text.h"

#include <sstream>

#include "config/number_scan.h"
#include "config/parameter_table.h"

namespace zemora {

namespace {

constexpr std::size_t kLineWidth = 98;  // characters
constexpr std::size_t kKeyWidth = 18;

/// The sentences of these texts that no parameter or message row holds.
struct Wording {
    const char* purpose;
    const char* folder_forms;
    const char* options;
    const char* option_rule;
    const char* help;
    const char* version;
    const char* end_of_options;
    const char* range_word;
    const char* sample_head;
    const char* man_name;
    const char* man_synopsis;
    const char* man_description;
    const char* man_settings;
    const char* exit_heading;
    const char* exit_text;
};

/// A part of the manual page behind the settings: entries of a term and its meaning.
struct ManualEntry {
    const char* term;  ///< Null where the section begins; the texts are its heading then.
    const char* english;
    const char* german;
};

constexpr ManualEntry kManualEnd[] = {
#define SECTION(english, german) {nullptr, english, german},
#define ENTRY(term, english, german) {term, english, german},
#include "config/manual_entries.inc"
};

constexpr Wording kEnglish = {
    "Zemora corrects the geometric errors of stereo pictures, places the stereo window and stores "
    "left, right, side-by-side and anaglyph pictures.",
    "7.) Zemora <directory> [Option]\n8.) Zemora <left directory> <right directory> [Option]\n",
    "Options:",
    "Every setting of the parameter file is also an option, by its code (/OH=1080) or its name "
    "(--OutputHeight=1080). Options may stand anywhere and are applied after the parameter file. "
    "Defaults are shown. /RO sets both RenameOrphans and RenameRefused, /FL both FrameLeftRight and "
    "FirstLineIndex; the "
    "names set one key each and are checked against its range. In scripts /SE=0 keeps the program from "
    "waiting for "
    "Enter.",
    "this text",
    "the version of the program",
    "ends the options: everything behind it is a file or directory",
    " to ",
    "Parameter file of Zemora. Behind a percent sign everything is comment. Keys of texts begin in "
    "the first column; the first line with a key counts.",
    "correct and mount stereo pictures",
    "SYNOPSIS",
    "DESCRIPTION",
    "SETTINGS",
    "EXIT STATUS",
    "0 after a run that came to its end; 1 after a stop, and when the output could not be written; 3 with "
    "ExitStatus=1 after a run that came to its end without mounting every object; 128 and the number of the "
    "signal "
    "after a signal, so 130 after Ctrl-C.",
};

constexpr Wording kGerman = {
    "Zemora korrigiert die geometrischen Fehler von Stereobildern, setzt das Scheinfenster und speichert "
    "linke, rechte, Nebeneinander- und Anaglyphenbilder.",
    "7.) Zemora <Verzeichnis> [Option]\n8.) Zemora <linkes Verzeichnis> <rechtes Verzeichnis> [Option]\n",
    "Optionen:",
    "Jede Angabe der Parameterdatei ist auch eine Option, mit ihrem Kuerzel (/OH=1080) oder ihrem Namen "
    "(--OutputHeight=1080). Optionen stehen an beliebiger Stelle und gelten nach der Parameterdatei. "
    "Gezeigt sind die Defaultwerte. /RO setzt RenameOrphans und RenameRefused, /FL setzt FrameLeftRight und "
    "FirstLineIndex; die Namen setzen je einen Schluessel und werden gegen seinen Bereich geprueft. In "
    "Skripten sorgt "
    "/SE=0 dafuer, dass das Programm nicht auf Enter wartet.",
    "dieser Text",
    "die Version des Programms",
    "beendet die Optionen: alles dahinter ist eine Datei oder ein Verzeichnis",
    " bis ",
    "Parameterdatei von Zemora. Hinter einem Prozentzeichen ist alles Kommentar. Schluessel von Texten "
    "beginnen in der ersten Spalte; die erste Zeile mit einem Schluessel zaehlt.",
    "Stereobilder korrigieren und montieren",
    "UEBERSICHT",
    "BESCHREIBUNG",
    "EINSTELLUNGEN",
    "EXIT-STATUS",
    "0 nach einem Lauf, der zu Ende kam; 1 nach einem Abbruch, und wenn die Ausgabe nicht geschrieben werden "
    "konnte; 3 "
    "mit ExitStatus=1 nach einem Lauf, der zu Ende kam, aber nicht jedes Objekt montiert hat; 128 und die "
    "Nummer des "
    "Signals nach einem Signal, also 130 nach Strg-C.",
};

const Wording& wording(Language language) {
    return language == Language::german ? kGerman : kEnglish;
}

/// The text in lines of at most `kLineWidth` characters, each behind `indent`.
std::string wrapped(const std::string& text, const std::string& indent) {
    std::istringstream words(text);
    std::string result;
    std::string line;
    for (std::string word; words >> word;) {
        if (!line.empty() && indent.size() + line.size() + 1 + word.size() > kLineWidth) {
            result += indent + line + "\n";
            line.clear();
        }
        line += (line.empty() ? "" : " ") + word;
    }
    return line.empty() ? result : result + indent + line + "\n";
}

/// The meaning with the allowed range of a number behind it.
std::string meaning_with_range(const ParameterRow& row, Language language) {
    std::string text = row.meaning(language);
    if (row.has_limits()) {
        text += " (" + number_text(row.low) + wording(language).range_word + number_text(row.high) + ")";
    }
    return text;
}

/// The default as it is typed in a shell or a manual page: on one line, nothing for the batch text.
std::string default_shown(const ParameterRow& row) {
    const std::string value = value_text(row, default_parameters());
    return value.find('\n') == std::string::npos ? value : "";
}

std::string usage_lines(const MessageCatalogue& messages, Language language) {
    std::string lines;
    for (const Msg message :
         {Msg::main_usage_heading, Msg::main_usage_form_1, Msg::main_usage_form_2, Msg::main_usage_form_3,
          Msg::main_usage_form_4, Msg::main_usage_form_5, Msg::main_usage_form_6}) {
        lines += messages.raw(message);
    }
    return lines + wording(language).folder_forms + messages.raw(Msg::main_usage_suffix_hint);
}

/// Roff takes a backslash and, at the beginning of a line, a dot or an apostrophe as commands.
std::string roff(const std::string& text) {
    std::string escaped = text.starts_with('.') || text.starts_with('\'') ? "\\&" : "";
    for (const char c : text) {
        escaped += c == '\\' ? "\\e" : c == '-' ? "\\-" : std::string(1, c);
    }
    return escaped;
}

std::string roff_lines(const std::string& text) {
    std::istringstream lines(text);
    std::string escaped;
    for (std::string line; std::getline(lines, line);) {
        escaped += roff(line) + "\n";
    }
    return escaped;
}

std::string sample_row(const ParameterRow& row, Language language) {
    std::string key(row.key);
    key.resize(std::max(key.size(), kKeyWidth), ' ');
    // The file speaks its own language.
    const std::string value = &row == &row_of(Parameter::language) ? number_text(static_cast<int>(language))
                                                                   : value_text(row, default_parameters());
    const std::string comment = wrapped(meaning_with_range(row, language), "% ");
    if (&row == &row_of(Parameter::do_post_zemora)) {
        return comment + key + " = %\n" + value + "%\n";
    }
    return comment + (acts_when_not_set(row) ? "% " : "") + key + " =" + (value.empty() ? "" : " " + value) +
           "\n";
}

}  // namespace

std::string version_text() {
    return "Zemora " + default_parameters().zemora_version + "\n";
}

std::string help_text(Language language) {
    const Wording& words = wording(language);
    const MessageCatalogue messages(language);
    std::string text =
        version_text() + "\n" + wrapped(words.purpose, "") + "\n" + usage_lines(messages, language);
    text += "\n" + std::string(words.options) + "\n" + wrapped(words.option_rule, "") + "\n";
    text += "  /h, --help\n" + wrapped(words.help, "      ");
    text += "  --version\n" + wrapped(words.version, "      ");
    text += "  --\n" + wrapped(words.end_of_options, "      ");
    for (const ParameterListingItem& item : kParameterListing) {
        if (item.is_heading()) {
            text += "\n" + std::string(item.heading(language)) + "\n";
            continue;
        }
        const ParameterRow& row = kParameterRows[item.row];
        if (!row.option.empty()) {
            text += "  /" + std::string(row.option) + "  --" + std::string(row.key) + "=" +
                    default_shown(row) + "\n";
            text += wrapped(meaning_with_range(row, language), "      ");
        }
    }
    return text + "\n" + words.exit_heading + "\n" + wrapped(words.exit_text, "  ");
}

std::string manual_page(Language language) {
    const Wording& words = wording(language);
    const MessageCatalogue messages(language);
    const auto section = [](const char* name) { return std::string(".SH ") + name + "\n"; };
    const auto item = [](const std::string& head, const std::string& text) {
        return ".TP\n.B " + roff(head) + "\n" + roff(text) + "\n";
    };
    std::string page = R"(.TH ZEMORA 1 "" ")" + version_text();
    page.back() = '"';
    page += "\n.SH NAME\nzemora \\- " + roff(words.man_name) + "\n" + section(words.man_synopsis);
    page += ".nf\n" + roff_lines(usage_lines(messages, language)) + ".fi\n";
    page += section(words.man_description) + roff(words.purpose) + "\n.PP\n" + roff(words.option_rule) + "\n";
    page +=
        item("/h, --help", words.help) + item("--version", words.version) + item("--", words.end_of_options);
    page += section(words.man_settings);
    for (const ParameterListingItem& entry : kParameterListing) {
        if (entry.is_heading()) {
            page += ".SS " + roff(entry.heading(language)) + "\n";
            continue;
        }
        const ParameterRow& row = kParameterRows[entry.row];
        if (!row.option.empty()) {
            page +=
                item("/" + std::string(row.option) + ", --" + std::string(row.key) + "=" + default_shown(row),
                     meaning_with_range(row, language));
        }
    }
    for (const ManualEntry& entry : kManualEnd) {
        const char* text = language == Language::german ? entry.german : entry.english;
        page += entry.term == nullptr ? section(text) : item(entry.term, text);
    }
    return page + section(words.exit_heading) + roff(words.exit_text) + "\n";
}

std::string sample_parameter_file(Language language) {
    std::string file = wrapped(wording(language).sample_head, "% ");
    for (const ParameterListingItem& item : kParameterListing) {
        if (item.is_heading()) {
            file += "\n% ---- " + std::string(item.heading(language)) + " ----\n\n";
        } else if (kParameterRows[item.row].is_in_file()) {
            file += sample_row(kParameterRows[item.row], language);
        }
    }
    return file;
}

}  // namespace zemora
