#include "apps/cli/CommandLine.h"

#include "apps/cli/ChoiceOption.h"
#include "apps/cli/PhotoFile.h"
#include "apps/cli/PictureInputs.h"
#include "apps/cli/StandardStreams.h"

#include <CLI/CLI.hpp>

#include <algorithm>
#include <string>

namespace kestrelid::cli {
namespace {

constexpr const char* kProgramFooter = R"(Examples:
  kestrelid validate passport.jpg
  kestrelid text recognised.txt
  kestrelid zone passport.jpg
  kestrelid watch
  kestrelid doctor

'kestrelid COMMAND --help' tells more. Exit status: 0 done, 1 some input could
not be read or watched, 2 wrong usage.)";

constexpr const char* kValidateFooter = R"(Examples:
  kestrelid validate passport.jpg card.png
  kestrelid validate --json scans/ > verdicts.jsonl
  kestrelid validate --annotate marked scans/*.jpg
  curl -s https://example.org/page.jpg | kestrelid validate -)";

constexpr const char* kTextFooter = R"(Examples:
  kestrelid text recognised.txt
  tesseract page.png - | kestrelid text --json)";

constexpr const char* kZoneFooter = R"(Examples:
  kestrelid zone passport.jpg
  kestrelid zone --as-of 2026-01-31 --json scans/
  kestrelid zone --text recognised.txt
  tesseract page.png - | kestrelid zone --text --json | jq '.zones[].strict')";

constexpr const char* kWatchFooter =
    R"(Ends on Ctrl-C, after --seconds, or once the photo is written.

Examples:
  kestrelid watch
  kestrelid watch --list
  kestrelid watch --photo page.jpg
  kestrelid watch --zone --as-of 2026-01-31
  kestrelid watch --camera passport.jpg --seconds 5
  kestrelid watch --json --seconds 60 | jq 'select(.event == "document")')";

constexpr const char* kDoctorFooter =
    R"(Exit status: 0 where the default recogniser works, with or without a camera;
1 otherwise.

Examples:
  kestrelid doctor
  kestrelid doctor --json --resources /opt/kestrelid/models)";

// Marks an argument that CLI11 is to take as it stands.
constexpr char kAsItStands = '\x01';

// The arguments from last to first, as CLI11 takes them. It would take a file named "[a,b]" for a
// list of two, and refuses names that look like options after a name and "--".
std::vector<std::string> reversedArguments(int argc, const char* const* argv) {
    std::vector<std::string> arguments;
    bool isName = false;
    for (int i = 1; i < argc; ++i) {
        const std::string_view argument = argv[i];
        if (i > 1 && !isName && argument == "--") {
            isName = true;
            continue;
        }
        const bool looksLikeList = argument.starts_with('[') && argument.ends_with(']');
        const bool isMarked = isName || looksLikeList || argument.starts_with(kAsItStands);
        arguments.push_back((isMarked ? std::string(1, kAsItStands) : "") + std::string(argument));
    }
    std::ranges::reverse(arguments);
    return arguments;
}

void unmark(std::vector<std::string>& names) {
    for (std::string& name : names) {
        if (name.starts_with(kAsItStands))
            name.erase(0, 1);
    }
}

void addResources(CLI::App& command, std::filesystem::path& resources) {
    command
        .add_option_function<std::string>(
            "--resources", [&](const std::string& folder) { resources = folder; },
            "Folder that holds the models and the ONNX Runtime library")
        ->type_name("DIR")
        ->check(CLI::Validator(CLI::ExistingDirectory).description(""));
}

void addValidate(CLI::App& command, ValidateOptions& options) {
    command.footer(kValidateFooter);
    command
        .add_option(
            "FILE", options.inputs,
            "Pictures (JPEG, PNG, WebP, TIFF, HEIC), PDF, folders of them, or - for standard input")
        ->required()
        ->type_name("");
    command.add_flag("--json", options.json, "One JSON object a line and input");
    command.add_flag_callback(
        "--no-text", [&] { options.withText = false; },
        "Leave the recognised text and what zones say out of the JSON");
    command.add_option("-j,--jobs", options.jobs, "Pictures judged at once, 1 to 64")
        ->type_name("N")
        ->check(CLI::Range(1, 64).description(""));
    addChoiceOption<ValidationEffort>(
        command, "--effort", kEfforts,
        "verdict: stop reading once the verdict is certain (default: complete)",
        [&](ValidationEffort value) { options.effort = value; });
    addResources(command, options.resources);
    command
        .add_option_function<std::string>(
            "--annotate",
            [&](const std::string& folder) {
                if (folder.empty())
                    throw CLI::ValidationError("--annotate", "names no folder");
                options.annotate = folder;
            },
            "Write copies with outline and verdict drawn on them into DIR")
        ->type_name("DIR");
    command.callback([&options] {
        unmark(options.inputs);
        if (!options.withText && !options.json)
            throw CLI::ValidationError("--no-text", "needs --json");
        const auto standardInputs =
            std::count(options.inputs.begin(), options.inputs.end(), kStandardInputName);
        if (standardInputs > 1)
            throw CLI::ValidationError("-", "standard input can be read only once");
    });
}

void addAsOf(CLI::App& command, std::optional<CalendarDay>& asOf) {
    command
        .add_option_function<std::string>(
            "--as-of",
            [&](const std::string& given) {
                asOf = calendarDay(given);
                if (!asOf)
                    throw CLI::ValidationError("--as-of", "takes a day, such as 2026-01-31");
            },
            "The day that tells the centuries of years; without it they keep two digits")
        ->type_name("YYYY-MM-DD");
}

void addZone(CLI::App& command, ZoneOptions& options) {
    command.footer(kZoneFooter);
    command
        .add_option("FILE", options.files,
                    "Pictures (JPEG, PNG, WebP, TIFF, HEIC), PDF, folders of them, or - for "
                    "standard input; with --text: text")
        ->type_name("");
    command.add_flag("--text", options.isText,
                     "FILE, or standard input, holds text that was already recognised");
    command.callback([&options] {
        unmark(options.files);
        if (!options.isText && options.files.empty())
            throw CLI::RequiredError("FILE");
    });
    addResources(command, options.resources);
    command.add_flag("--json", options.json, "One JSON object a line and file");
    addAsOf(command, options.asOf);
}

void addSeconds(CLI::App& command, const std::string& name, std::optional<double>& seconds,
                double least, const std::string& description) {
    constexpr double kMost = 1e9;  // thirty years
    command
        .add_option_function<double>(
            name,
            [&seconds, name, least](double given) {
                if (!(given >= least && given <= kMost))
                    throw CLI::ValidationError(name, "takes a number of seconds");
                seconds = given;
            },
            description)
        ->type_name("N");
}

void addPhoto(CLI::App& command, WatchOptions& options) {
    command
        .add_option_function<std::string>(
            "--photo",
            [&](const std::string& file) {
                if (!hasWritableExtension(file))
                    throw CLI::ValidationError("--photo",
                                               "'" + file + "' is none of .jpg, .jpeg, .png");
                options.photo = file;
            },
            "Take a photo once a passport is in view, write it to FILE, and end")
        ->type_name("FILE");
    addSeconds(command, "--after", options.after, 0.0,
               "Take the photo N seconds after the camera is ready, whatever is in view");
    command.add_flag("--force", options.force, "Let the photo replace a file");
    command.callback([&options] {
        if (options.list && !options.photo.empty())
            throw CLI::ValidationError("--list", "takes no photo");
        if (options.photo.empty() && options.after)
            throw CLI::ValidationError("--after", "needs --photo");
        if (options.photo.empty() && options.force)
            throw CLI::ValidationError("--force", "needs --photo");
        if (options.asOf && !options.zone)
            throw CLI::ValidationError("--as-of", "needs --zone");
    });
}

void addWatch(CLI::App& command, WatchOptions& options) {
    command.footer(kWatchFooter);
    command.add_flag("--list", options.list, "Name the cameras and end");
    command
        .add_option_function<std::string>(
            "--camera",
            [&](const std::string& camera) {
                if (camera.empty())
                    throw CLI::ValidationError("--camera", "names no camera");
                options.camera = camera;
            },
            "A camera by its name, or a picture or video file (default: the first camera)")
        ->type_name("NAME|FILE");
    command.add_flag("--json", options.json, "One JSON object a line and event");
    addSeconds(command, "--seconds", options.seconds, 0.1, "End after N seconds");
    command.add_flag("--zone", options.zone, "Read the machine-readable zone of the page in view");
    addAsOf(command, options.asOf);
    addPhoto(command, options);
    addResources(command, options.resources);
}

ExitStatus usageError(const CLI::App& app, const std::string& message) {
    // CLI11 spreads some messages over several lines; logs need one line each.
    std::string line = message;
    std::replace(line.begin(), line.end(), '\n', ' ');
    while (!line.empty() && line.back() == ' ')
        line.pop_back();
    std::string help = "kestrelid";
    for (const CLI::App* command : app.get_subcommands())
        help += " " + command->get_name();
    writeError(line + " (see '" + help + " --help')");
    return ExitStatus::wrongUsage;
}

std::string commandNeeded(const CLI::App& app, const std::string& given) {
    std::string commands;
    for (const CLI::App* command : app.get_subcommands({}))
        commands += (commands.empty() ? "" : ", ") + command->get_name();
    return (given.empty() || given.front() == '-' ? "needs a command: "
                                                  : "'" + given + "' is none of the commands ") +
           commands;
}

}  // namespace

std::variant<Command, ExitStatus> parseCommandLine(int argc, const char* const* argv) {
    CLI::App app("Tells whether pictures show a passport.", "kestrelid");
    app.set_version_flag("--version", "kestrelid " KESTRELID_VERSION);
    app.footer(kProgramFooter);
    app.require_subcommand(1);

    ValidateOptions validate;
    TextOptions text;
    ZoneOptions zone;
    WatchOptions watch;
    DoctorOptions doctor;
    CLI::App* validateCommand = app.add_subcommand("validate", "Judge pictures");
    addValidate(*validateCommand, validate);
    CLI::App* textCommand = app.add_subcommand("text", "Weigh text that was already recognised");
    textCommand->footer(kTextFooter);
    textCommand->add_option("FILE", text.files, "Text in UTF-8; - or none: standard input")
        ->type_name("");
    textCommand->add_flag("--json", text.json, "One JSON object a line and file");
    textCommand->callback([&text] { unmark(text.files); });
    CLI::App* zoneCommand =
        app.add_subcommand("zone", "Read machine-readable zones, and check their digits");
    addZone(*zoneCommand, zone);
    CLI::App* watchCommand = app.add_subcommand("watch", "Look through a camera, and take a photo");
    addWatch(*watchCommand, watch);
    CLI::App* doctorCommand =
        app.add_subcommand("doctor", "Say what this machine offers, and what is missing");
    doctorCommand->footer(kDoctorFooter);
    doctorCommand->add_flag("--json", doctor.json, "One JSON object");
    addResources(*doctorCommand, doctor.resources);

    try {
        app.parse(reversedArguments(argc, argv));
    } catch (const CLI::CallForHelp&) {
        writeOutput(app.help() + "\n");
        return outputStatus();
    } catch (const CLI::CallForVersion& version) {
        writeOutput(std::string(version.what()) + "\n");
        return outputStatus();
    } catch (const CLI::ParseError& error) {
        // CLI11 has the same words for a command that is missing and for one that does not exist.
        if (app.get_subcommands().empty())
            return usageError(app, commandNeeded(app, argc < 2 ? "" : argv[1]));
        return usageError(app, error.what());
    }
    if (validateCommand->parsed())
        return Command(std::move(validate));
    if (textCommand->parsed())
        return Command(std::move(text));
    if (zoneCommand->parsed())
        return Command(std::move(zone));
    if (watchCommand->parsed())
        return Command(std::move(watch));
    return Command(std::move(doctor));
}

}  // namespace kestrelid::cli
