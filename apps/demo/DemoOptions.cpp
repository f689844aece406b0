#include "apps/demo/DemoOptions.h"

#include <QCommandLineParser>

namespace kestrelid::demo {

namespace {

constexpr double kLongestWait = 3600.0;  // seconds
constexpr double kLargestText = 3.0;

const QStringList kThemes{"system", "light", "dark"};

// A number from least to most.
std::optional<double> number(const QString& text, double least, double most) {
    bool isNumber = false;
    const double value = text.toDouble(&isNumber);
    if (!isNumber || !(value >= least && value <= most))
        return std::nullopt;
    return value;
}

}  // namespace

std::variant<DemoOptions, UsageError> parseOptions(const QStringList& arguments) {
    QCommandLineParser parser;
    parser.addOptions({{{"h", "help"}, {}},
                       {"version", {}},
                       {"widgets", {}},
                       {"camera", {}, "NAME|FILE"},
                       {"theme", {}, "system|light|dark", kThemes.first()},
                       {"language", {}, "CODE"},
                       {"text-scale", {}, "FACTOR", "1"},
                       {"screenshot", {}, "FILE"},
                       {"after", {}, "SECONDS"}});
    if (!parser.parse(arguments)) {
        QString cause = parser.errorText();
        if (cause.endsWith('.'))
            cause.chop(1);
        return UsageError{cause};
    }

    DemoOptions options{.help = parser.isSet("help"),
                        .version = parser.isSet("version"),
                        .widgets = parser.isSet("widgets"),
                        .camera = parser.value("camera"),
                        .theme = parser.value("theme"),
                        .language = parser.value("language"),
                        .screenshot = parser.value("screenshot")};
    for (const char* name : {"camera", "language", "screenshot", "after"}) {
        if (parser.isSet(name) && parser.value(name).isEmpty())
            return UsageError{QString("--%1 needs a value").arg(name)};
    }
    const QStringList pictures = parser.positionalArguments();
    if (pictures.size() > 1)
        return UsageError{"only one picture can be shown: " + pictures.at(1)};
    if (!pictures.isEmpty())
        options.picture = pictures.first();
    if (!kThemes.contains(options.theme))
        return UsageError{"--theme: not system, light or dark: " + options.theme};
    const auto textScale = number(parser.value("text-scale"), 1.0, kLargestText);
    if (!textScale)
        return UsageError{"--text-scale: not a number from 1 to 3: " + parser.value("text-scale")};
    options.textScale = *textScale;
    if (parser.isSet("after")) {
        options.after = number(parser.value("after"), 0.0, kLongestWait);
        if (!options.after)
            return UsageError{"--after: not a number of seconds from 0 to 3600: " +
                              parser.value("after")};
        if (options.screenshot.isEmpty())
            return UsageError{"--after is the time of a --screenshot"};
    }
    return options;
}

QString helpText() {
    return QStringLiteral(R"(usage: kestrelid-demo [OPTION]... [PICTURE]

A host of Kestrelid's screens: scan a passport, look at the photo, take it again or confirm it, and
see what was found. PICTURE opens in the preview, as does a picture that is dropped on the window,
pasted, or chosen with the picture button. Without a camera, a drawn passport stands for one.

  --camera NAME|FILE    a camera of this machine, or a picture or video file that stands for one
  --widgets             hosts the screens in widgets instead of QML
  --theme THEME         system (default), light or dark
  --language CODE       the language of the texts: en, bn or ar (default: the system's)
  --text-scale FACTOR   how much larger texts are, 1 to 3 (default 1)
  --screenshot FILE     writes what the window shows to a PNG or JPEG file, and ends
  --after SECONDS       how long after the window has opened (default 5)
  -h, --help            shows this
  --version             shows the version

Exit status: 0 done, 1 failed, 2 wrong usage.
)");
}

}  // namespace kestrelid::demo
