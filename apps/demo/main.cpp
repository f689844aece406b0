#include "apps/demo/DemoLooks.h"
#include "apps/demo/DemoOptions.h"
#include "apps/demo/DemoSession.h"
#include "apps/demo/QmlHost.h"
#include "apps/demo/WidgetsHost.h"

#include <kestrelid/DefaultServices.h>

#include <array>
#include <chrono>
#include <cstdio>
#include <QApplication>
#include <QImageWriter>
#include <QTimer>

namespace kestrelid::demo {

namespace {

enum ExitStatus { kDone = 0, kFailed = 1, kWrongUsage = 2 };

int fail(const QString& cause, ExitStatus status) {
    std::fprintf(stderr, "kestrelid-demo: %s\n", qUtf8Printable(cause));
    return status;
}

// The models load while the window opens; the first frame would wait for them.
void loadModels(PlatformServices recognition) {
    constexpr int kSide = 64;  // pixels
    const auto pixels = std::make_shared<std::array<std::byte, kSide * kSide>>();
    const auto picture =
        Bitmap::wrap(kSide, kSide, kSide, PixelFormat::gray8,
                     std::shared_ptr<std::byte[]>(pixels, pixels->data()), pixels->size());
    recognition.console = [](std::string_view) {};  // the first real picture tells what is missing
    const auto detector = PassportDetector::create(std::move(recognition));
    if (picture && detector)
        detector->validate(Image(*picture), [detector](const PassportValidationResult&) {});
}

void takeScreenshot(const DemoOptions& options, Host& host) {
    constexpr double kDefaultWait = 5.0;  // seconds
    const auto wait = std::chrono::duration<double>(options.after.value_or(kDefaultWait));
    QTimer::singleShot(
        std::chrono::round<std::chrono::milliseconds>(wait), &*qApp,
        [file = options.screenshot, &host] {
            QImageWriter writer(file);
            const bool isWritten = writer.write(host.grab());
            QApplication::exit(
                isWritten ? kDone
                          : fail("cannot write " + file + ": " + writer.errorString(), kFailed));
        });
}

int show(const DemoOptions& options, const PlatformServices& recognition) {
    DemoSession session(options, recognition.queue);
    const std::unique_ptr<Host> host =
        options.widgets ? makeWidgetsHost(session, recognition) : makeQmlHost(session, recognition);
    if (!host)
        return fail("the screens cannot be loaded", kFailed);
    if (!options.screenshot.isEmpty())
        takeScreenshot(options, *host);
    return QApplication::exec();
}

int run(int argc, char** argv) {
    QStringList arguments;
    for (int index = 0; index < argc; ++index)
        arguments.append(QString::fromLocal8Bit(argv[index]));
    const auto parsed = parseOptions(arguments);
    if (const auto* error = std::get_if<UsageError>(&parsed))
        return fail(error->cause + "; kestrelid-demo --help tells more", kWrongUsage);
    const auto& options = std::get<DemoOptions>(parsed);
    if (options.help || options.version) {
        const QString text = options.help ? helpText() : "kestrelid-demo " KESTRELID_VERSION "\n";
        std::fputs(qUtf8Printable(text), stdout);
        return kDone;
    }
    const bool hasDisplay = qEnvironmentVariableIsSet("DISPLAY") ||
                            qEnvironmentVariableIsSet("WAYLAND_DISPLAY") ||
                            qEnvironmentVariableIsSet("QT_QPA_PLATFORM");
    if (!hasDisplay)
        return fail("no display: neither DISPLAY nor WAYLAND_DISPLAY is set", kFailed);

    const PlatformServices recognition = defaultServices();
    loadModels(recognition);
    QApplication application(argc, argv);
    QApplication::setApplicationName("kestrelid-demo");
    QGuiApplication::setDesktopFileName("org.kestrelid.Demo");
    applyTheme(options.theme);
    if (!applyLanguage(options.language))
        return fail("--language: the texts are not translated into: " + options.language,
                    kWrongUsage);
    return show(options, recognition);
}

}  // namespace

}  // namespace kestrelid::demo

int main(int argc, char** argv) {
    return kestrelid::demo::run(argc, argv);
}
