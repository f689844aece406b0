// Draws every page of the passport scan, in its states, sizes, themes and languages, for looking
// at. usage: kestrelid_render_screens SAMPLES TRANSLATIONS FOLDER [NAME...]    NAME: of a look or a
// scene
#include "tests/screens/FakeCamera.h"
#include "tests/screens/ShownScreen.h"

#include <kestrelid/DefaultServices.h>
#include <kestrelid/screens/MainQueue.h>

#include <algorithm>
#include <cstdio>
#include <cstring>
#include <QApplication>
#include <QDir>
#include <QFile>
#include <QFont>
#include <QPainter>
#include <QTest>
#include <QTranslator>

namespace kestrelid::test {
namespace {

// How the screens are shown.
struct Look {
    const char* name;
    QSize size;
    double textScale = 1.0;
    const char* theme = "light";
    const char* language = "en";
};

const std::vector<Look> kLooks{
    {"phone", {390, 760}},
    {"phone-lying", {820, 390}},
    {"tablet", {1180, 820}},
    {"laptop", {1280, 720}},
    {"desktop", {1920, 1080}},
    {"wall", {3840, 2160}},
    {"small", {320, 480}},
    {"tiny", {320, 240}},
    {"narrow", {240, 320}},
    {"large-text", {390, 760}, 2.0},
    {"large-text-lying", {820, 390}, 2.0},
    {"dark", {390, 760}, 1.0, "dark"},
    {"dark-laptop", {1280, 720}, 1.0, "dark"},
    {"arabic", {390, 760}, 1.0, "light", "ar"},
    {"arabic-laptop", {1280, 720}, 1.0, "dark", "ar"},
    {"bengali", {390, 760}, 1.0, "light", "bn"},
    {"bengali-lying", {820, 390}, 1.0, "light", "bn"},
};

// In the format of a camera's frames.
Image sample(const QString& file) {
    const QImage picture = QImage(file).convertToFormat(QImage::Format_RGB32);
    const auto bytes = static_cast<std::size_t>(picture.sizeInBytes());
    const auto pixels = std::make_shared<std::byte[]>(bytes);
    std::memcpy(pixels.get(), picture.constBits(), bytes);
    const auto bitmap = Bitmap::wrap(picture.width(), picture.height(), picture.bytesPerLine(),
                                     PixelFormat::bgra8, pixels, bytes);
    if (!bitmap)
        qFatal("cannot read %s", qPrintable(file));
    return Image(*bitmap);
}

// Asks for models that nobody has installed.
struct MissingText final : TextService {
    TextResult perform(const Bitmap&, const TextRequest&) override {
        return RequestError{.description =
                                "text-recogniser.onnx is missing: install kestrelid-models"};
    }
};

// What the pictures show, and what is found in them.
struct Materials {
    explicit Materials(const QString& folder)
        : samples(folder), page(sample(folder + "/bangladesh-on-wood.jpg")),
          recognition(defaultServices()) {
        recognition.console = [](std::string_view) {};
        const auto found = recognition.rectangles->perform(*page.bitmap(), {});
        if (const auto* list = std::get_if<std::vector<RectangleObservation>>(&found))
            outlines->seen = *list;
    }

    struct Outlines final : RectangleService {
        RectangleResult perform(const Bitmap& bitmap, const RectangleRequest&) override {
            // The page is 4 : 3, the empty desk 16 : 9.
            return 3 * bitmap.width() == 4 * bitmap.height() ? seen
                                                             : std::vector<RectangleObservation>{};
        }
        std::vector<RectangleObservation> seen;
    };

    QString samples;
    Image page;
    PlatformServices recognition;
    std::shared_ptr<Outlines> outlines = std::make_shared<Outlines>();
};

// One passport scan in a window, and all that it stands on.
class Stage {
public:
    Stage(const Look& look, const Materials& materials, const PlatformServices& recognition,
          const std::function<void(FakeCamera&)>& prepare, QVariantMap properties)
        : materials_(materials) {
        prepare(camera);
        ScannerCamera given = camera.scannerCamera();
        given.recognition = recognition;
        given.makeServices = [make = given.makeServices, outlines = materials.outlines,
                              clock = camera.wallClock](const auto& queue,
                                                        const CameraOptions& options) {
            CameraServices services = make(queue, options);
            services.outlines = outlines;
            services.uptime = [clock] { return std::chrono::duration<double>(*clock); };
            return services;
        };
        properties.insert({{"completion", QVariant::fromValue(ScreenAction([] {}))},
                           {"textScale", look.textScale},
                           {"theme", QString::fromLatin1(look.theme)}});
        screen_ = std::make_unique<ShownScreen>("PassportScan", properties, look.size, given);
        crank();
    }

    FakeCamera camera;

    ShownScreen& screen() { return *screen_; }

    void crank() const {
        camera.mainQueue->runAll();
        camera.otherQueues->runAll();
        camera.mainQueue->runAll();
        settle();
    }

    // Frames of this picture, two seconds of them.
    void see(const Image& picture) const {
        camera.platform->session.lock()->tell();
        for (int frame = 0; frame < 8; ++frame) {
            *camera.wallClock += 0.25;
            camera.platform->videoOutput.lock()->deliver(
                std::make_shared<FakePixelBuffer>(picture.bitmap()));
            camera.mainQueue->advance(0.25);
            crank();
        }
        if (const auto surface = camera.surface())
            surface->show(*picture.bitmap(), Orientation::up, false);
        settle();
    }
    void seePassport() const {
        camera.makeReady();
        see(materials_.page);
        camera.judge(true);
        see(materials_.page);
    }

    // fileName: of a sample; empty: the camera fails.
    void takePhoto(const QString& fileName) {
        camera.makeReady();
        see(materials_.page);
        click(screen_->item("captureArea"));
        camera.pass();
        const auto output = camera.platform->photoOutput.lock();
        if (!output || output->requests.empty())
            qFatal("no photo was asked for");
        if (fileName.isEmpty()) {
            output->finish({}, CaptureError{"The camera gave no picture within five seconds"});
        } else {
            QFile file(materials_.samples + "/" + fileName);
            if (!file.open(QIODevice::ReadOnly))
                qFatal("%s", qPrintable(file.errorString()));
            const QByteArray bytes = file.readAll();
            const auto* begin = reinterpret_cast<const std::byte*>(bytes.constData());
            output->finish(
                {.fileDataRepresentation = std::vector<std::byte>(begin, begin + bytes.size())});
        }
        crank();
        waitForPage(fileName.isEmpty() ? "failed" : "preview");
    }

    void confirm(const char* page = "result") {
        click(findItem(screen_->item("confirm"), "area"));
        waitForPage(page);
    }

    void open(const QString& file) {
        QMetaObject::invokeMethod(screen_->root(), "open",
                                  Q_ARG(QVariant, QUrl::fromLocalFile(file)));
    }

    void waitForPage(const QString& name) {
        if (!waitFor([&] { return screen_->root()->property("name") == name; }))
            qFatal("the page %s did not come", qPrintable(name));
    }

    // Once all pictures are drawn and movements have ended.
    QImage picture() {
        waitFor([&] { return isComplete(screen_->root()); });
        QTest::qWait(250);  // ms
        return screen_->grab();
    }

private:
    static bool isComplete(const QQuickItem* item) {
        const QVariant complete = item->property("isComplete");
        const auto children = item->childItems();
        return (!item->isVisible() || !complete.isValid() || complete.toBool()) &&
               std::all_of(children.begin(), children.end(), isComplete);
    }

    const Materials& materials_;
    std::unique_ptr<ShownScreen> screen_;
};

void nothing(FakeCamera&) {}

// A page in a state.
struct Scene {
    const char* name;
    std::function<void(Stage&)> play;
    std::function<void(FakeCamera&)> prepare = nothing;
    QVariantMap properties{};
    std::function<void(PlatformServices&)> change = [](auto&) {};  // of what recognises
};

std::vector<Scene> scenes(const QString& folder) {
    const auto lit = [](FakeCamera& camera) {
        camera.machine().controls = {{.control = CameraControl::torch},
                                     {.control = CameraControl::zoom}};
        camera.machine().cameras = {
            {.name = "Fake camera", .formats = {}, .position = CameraPosition::back},
            {.name = "Front camera", .formats = {}, .position = CameraPosition::front}};
    };
    const auto lose = [](Stage& stage, CameraStatus status) {
        stage.camera.makeReady();
        stage.camera.platform->session.lock()->fail(std::move(status));
        stage.crank();
    };
    const auto ready = [](Stage& stage) { stage.camera.makeReady(); };
    return {
        {"1-denied", ready,
         [](FakeCamera& camera) {
             *camera.authorization = FakeAuthorization(AuthorizationStatus::denied);
         }},
        {"2-starting", [](Stage&) {}},
        {"3-no-page",
         [folder](Stage& stage) {
             stage.camera.makeReady();
             stage.see(sample(folder + "/desk.jpg"));
         },
         lit},
        {"4-in-view", [](Stage& stage) { stage.seePassport(); }, lit},
        {"5-by-itself",
         [](Stage& stage) { stage.seePassport(); },
         lit,
         {{"capturesByItself", true}}},
        {"6-lost",
         [lose](Stage& stage) {
             lose(stage, {.state = CameraState::lost, .cause = "/dev/video0: no such device"});
         },
         lit},
        {"7-busy",
         [lose](Stage& stage) {
             lose(stage, {.state = CameraState::busy, .cause = "/dev/video0 is in use"});
         },
         lit},
        {"8-failed", ready, [](FakeCamera& camera) { camera.machine().deviceOpens = false; }},
        {"9-absent", ready, [](FakeCamera& camera) { camera.machine().hasDevice = false; }},
        {"a-notice",
         [](Stage& stage) { stage.seePassport(); },
         nothing,
         {{"notice",
           "No camera was found: this is a drawn passport. You can drop a picture here instead."}}},
        {"b-preview", [](Stage& stage) { stage.takePhoto("bangladesh-on-wood.jpg"); }},
        {"c-judging",
         [](Stage& stage) {
             stage.takePhoto("bangladesh-on-wood.jpg");
             stage.confirm("judging");
         },
         nothing,
         {},
         [](PlatformServices& services) { services.queue = std::make_shared<ManualQueue>(); }},
        {"d-passport",
         [](Stage& stage) {
             stage.takePhoto("utopia-perspective.jpg");
             stage.confirm();
         }},
        {"e-passport-only",
         [](Stage& stage) {
             stage.takePhoto("bangladesh-dim.jpg");
             stage.confirm();
         },
         nothing,
         {{"readsZone", false}}},
        {"f-no-passport",
         [](Stage& stage) {
             stage.takePhoto("receipt.jpg");
             stage.confirm();
         }},
        {"g-nothing",
         [](Stage& stage) {
             stage.takePhoto("desk.jpg");
             stage.confirm();
         },
         nothing,
         {{"acceptsAnyPhoto", true}}},
        {"h-no-photo", [](Stage& stage) { stage.takePhoto({}); }},
        {"i-no-picture",
         [folder](Stage& stage) {
             stage.open(folder + "/README.md");
             stage.waitForPage("failed");
         }},
        {"j-no-models",
         [](Stage& stage) {
             stage.takePhoto("bangladesh-on-wood.jpg");
             click(findItem(stage.screen().item("confirm"), "area"));
             QTest::qWait(2000);
         },
         nothing,
         {},
         [](PlatformServices& services) { services.text = std::make_shared<MissingText>(); }},
    };
}

// All pictures of a look, small, with their names.
QImage contactSheet(const std::vector<std::pair<QString, QImage>>& pictures) {
    constexpr int kWidth = 1600;
    constexpr int kCaption = 20;
    const QSize first = pictures.front().second.size();
    const int columns = first.width() < first.height() ? 7 : 4;
    const int width = kWidth / columns;
    const int height = width * first.height() / first.width() + kCaption;
    const int rows = (static_cast<int>(pictures.size()) + columns - 1) / columns;
    QImage sheet(kWidth, rows * height, QImage::Format_RGB32);
    sheet.fill(QColor(200, 205, 215));
    QPainter painter(&sheet);
    for (int index = 0; index < static_cast<int>(pictures.size()); ++index) {
        const auto& [name, picture] = pictures[static_cast<std::size_t>(index)];
        const QPoint at(index % columns * width, index / columns * height);
        painter.drawText(at + QPoint(4, kCaption - 5), name);
        painter.drawImage(at + QPoint(0, kCaption),
                          picture.scaled(width - 6, height - kCaption - 6, Qt::KeepAspectRatio,
                                         Qt::SmoothTransformation));
    }
    return sheet;
}

int render(const QStringList& arguments) {
    if (arguments.size() < 4) {
        std::fputs("usage: kestrelid_render_screens SAMPLES TRANSLATIONS FOLDER [NAME...]\n",
                   stderr);
        return 2;
    }
    const Materials materials(arguments.at(1));
    const QDir out(arguments.at(3));
    const QStringList names = arguments.mid(4);
    const std::vector<Scene> all = scenes(materials.samples);
    const auto isAnyNamed = [&names](const auto& list) {
        return std::any_of(list.begin(), list.end(),
                           [&](const auto& one) { return names.contains(one.name); });
    };
    const bool namesLooks = isAnyNamed(kLooks);
    const bool namesScenes = isAnyNamed(all);
    for (const Look& look : kLooks) {
        if (namesLooks && !names.contains(look.name))
            continue;
        QTranslator translator;
        if (translator.load(QStringLiteral("kestrelid_%1").arg(look.language), arguments.at(2)))
            QCoreApplication::installTranslator(&translator);
        const QLocale locale(QString::fromLatin1(look.language));
        QLocale::setDefault(locale);
        QGuiApplication::setLayoutDirection(locale.textDirection());
        out.mkpath(look.name);
        std::vector<std::pair<QString, QImage>> pictures;
        for (const Scene& scene : all) {
            if (namesScenes && !names.contains(scene.name))
                continue;
            PlatformServices recognition = materials.recognition;
            scene.change(recognition);
            Stage stage(look, materials, recognition, scene.prepare, scene.properties);
            scene.play(stage);
            pictures.emplace_back(scene.name, stage.picture());
            const QString file =
                out.filePath(QStringLiteral("%1/%2.png").arg(look.name, scene.name));
            if (!pictures.back().second.save(file))
                qFatal("cannot write %s", qPrintable(file));
        }
        contactSheet(pictures).save(out.filePath(QStringLiteral("%1.png").arg(look.name)));
        std::printf("%s\n", look.name);
        std::fflush(stdout);
        QCoreApplication::removeTranslator(&translator);
    }
    return 0;
}

}  // namespace
}  // namespace kestrelid::test

int main(int argc, char** argv) {
    qputenv("QT_QPA_PLATFORM", "offscreen");
    qputenv("QT_QUICK_BACKEND", "software");
    qputenv("QT_SCALE_FACTOR", "1");
    QApplication application(argc, argv);
    QApplication::setFont(QFont(QStringLiteral("DejaVu Sans"), 10));
    QApplication::setQuitOnLastWindowClosed(false);
    return kestrelid::test::render(QApplication::arguments());
}
