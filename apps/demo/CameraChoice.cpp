#include "apps/demo/CameraChoice.h"

#include <kestrelid/DefaultCamera.h>
#include <kestrelid/ImageFile.h>
#include <kestrelid/screens/MainQueue.h>

#include <chrono>
#include <QCoreApplication>
#include <QFileDialog>
#include <QFileInfo>
#include <QGuiApplication>
#include <QMenu>
#include <QMimeDatabase>
#include <QPointer>
#include <QWindow>
#include <variant>

namespace kestrelid::demo {

namespace {

constexpr std::chrono::duration<double> kPatience{2.0};  // a camera is ready after one second

QString drawnPassport() {
    const QFileInfo file(QCoreApplication::applicationDirPath() + "/" KESTRELID_DEMO_DATA
                                                                  "/bangladesh-spread.jpg");
    return file.isFile() ? file.canonicalFilePath() : QString();
}

QString noteOf(const QString& camera) {
    const QFileInfo file(camera);
    return file.isFile() ? CameraChoice::tr("Camera: the file %1").arg(file.fileName())
                         : CameraChoice::tr("Camera: %1").arg(camera);
}

}  // namespace

CameraChoice::CameraChoice(const QString& wanted, std::shared_ptr<DispatchQueue> background)
    : background_(std::move(background)), mainQueue_(makeQtMainQueue()) {
    if (!wanted.isEmpty()) {
        take(wanted, noteOf(wanted));
        return;
    }
    setNote(tr("Looking for cameras..."));
    findCameras([this](const Names& names) {
        if (!camera_.isEmpty())
            return;  // chosen meanwhile
        if (!names.isEmpty())
            take(names.first(), noteOf(names.first()));
        else if (!takeDrawnPassport(tr("No camera found: a drawn passport stands for one")))
            return;
        emit cameraFound();
    });
}

void CameraChoice::take(const QString& camera, const QString& note) {
    camera_ = camera;
    setNote(note);
    examineLater();
    emit cameraChanged();
}

void CameraChoice::choose(const QString& camera, const QString& note) {
    take(camera, note);
    emit cameraChosen();
}

bool CameraChoice::takeDrawnPassport(const QString& why) {
    const QString passport = drawnPassport();
    if (passport.isEmpty())
        setNote(tr("No camera found, and no drawn passport is installed"));
    else
        take(passport, why);
    return !passport.isEmpty();
}

void CameraChoice::setNote(const QString& note) {
    note_ = note;
    emit noteChanged();
}

void CameraChoice::findCameras(std::function<void(const Names&)> then) {
    background_->async(
        [mainQueue = mainQueue_, self = QPointer<CameraChoice>(this), then = std::move(then)] {
            Names names;
            for (const CameraDescription& camera : cameras()) {
                if (camera.obstacle.empty())
                    names.append(QString::fromStdString(camera.name));
            }
            mainQueue->async([self, names, then] {
                if (self)
                    then(names);
            });
        });
}

// The scanning screen says nothing about a camera that does not get ready.
void CameraChoice::examineLater() {
    mainQueue_->asyncAfter(kPatience, [self = QPointer<CameraChoice>(this), camera = camera_] {
        if (!self || self->camera_ != camera)
            return;
        self->background_->async([mainQueue = self->mainQueue_, self, camera] {
            CameraOptions options;
            options.camera = camera.toStdString();
            for (const ServiceStatus& part : diagnoseCamera(options)) {
                if (part.available)
                    continue;
                const auto cause = QString::fromStdString(part.name + ": " + part.details);
                return mainQueue->async([self, camera, cause] {
                    if (self && self->camera_ == camera)
                        self->setNote(cause);
                });
            }
        });
    });
}

void CameraChoice::open(const QUrl& file) {
    const QString path = file.toLocalFile();
    if (QMimeDatabase().mimeTypeForFile(path).name().startsWith("image/"))
        readPicture(path);
    else
        choose(path, noteOf(path));
}

void CameraChoice::readPicture(const QString& path) {
    background_->async([mainQueue = mainQueue_, self = QPointer<CameraChoice>(this), path] {
        const ImageResult picture = readImage(path.toStdString());
        mainQueue->async([self, path, picture] {
            if (!self)
                return;
            if (const auto* error = std::get_if<ImageError>(&picture))
                self->setNote(path + ": " + QString::fromStdString(error->cause));
            else
                emit self->pictureOpened(std::get<Image>(picture));
        });
    });
}

void CameraChoice::openMenu(const QPoint& at) {
    findCameras([this, at](const Names& names) { showMenu(at, names); });
}

void CameraChoice::showMenu(const QPoint& at, const Names& names) {
    auto* menu = new QMenu;
    menu->setAttribute(Qt::WA_DeleteOnClose);
    for (const QString& name : names)
        menu->addAction(name, this, [this, name] { choose(name, noteOf(name)); });
    if (names.isEmpty())
        menu->addAction(tr("No camera found"))->setEnabled(false);
    menu->addSeparator();
    menu->addAction(tr("Picture or video file..."), this, &CameraChoice::chooseFile);
    menu->addAction(tr("Drawn passport"), this, [this] {
        if (takeDrawnPassport(tr("A drawn passport stands for a camera")))
            emit cameraChosen();
    });
    // Some window systems refuse popups that belong to no window.
    menu->winId();
    menu->windowHandle()->setTransientParent(QGuiApplication::focusWindow());
    menu->popup(at);
}

void CameraChoice::chooseFile() {
    const QString path = QFileDialog::getOpenFileName(
        nullptr, tr("A file that stands for the camera"), {},
        tr("Pictures and videos (*.jpg *.jpeg *.png *.webp *.mp4 *.mkv *.webm *.avi *.mov);;"
           "All files (*)"));
    if (!path.isEmpty())
        choose(path, noteOf(path));
}

}  // namespace kestrelid::demo
