#include "apps/demo/DemoOptions.h"

#include <cmath>
#include <QCommandLineParser>

namespace kestrelid::demo {

namespace {

constexpr double kLongestWait = 3600.0;  // seconds

std::optional<double> seconds(const QString& text) {
    bool isNumber = false;
    const double value = text.toDouble(&isNumber);
    if (!isNumber || !(value >= 0.0 && value <= kLongestWait))
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
                        .picture = {},
                        .screenshot = parser.value("screenshot"),
                        .after = {}};
    for (const char* name : {"camera", "screenshot", "after"}) {
        if (parser.isSet(name) && parser.value(name).isEmpty())
            return UsageError{QString("--%1 needs a value").arg(name)};
    }
    const QStringList pictures = parser.positionalArguments();
    if (pictures.size() > 1)
        return UsageError{"only one picture can be shown: " + pictures.at(1)};
    if (!pictures.isEmpty())
        options.picture = pictures.first();
    if (parser.isSet("after")) {
        options.after = seconds(parser.value("after"));
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
see what the detector says of it. PICTURE opens in the preview, as does a picture that is dropped on
the window; a video that is dropped becomes the camera. Without a camera, a drawn passport stands
for one.

  --camera NAME|FILE    a camera of this machine, or a picture or video file that stands for one
  --widgets             hosts the screens in widgets instead of QML
  --screenshot FILE     writes what the window shows to a PNG or JPEG file, and ends
  --after SECONDS       how long after the window has opened (default 5)
  -h, --help            shows this
  --version             shows the version

Exit status: 0 done, 1 failed, 2 wrong usage.
)");
}

}  // namespace kestrelid::demo
