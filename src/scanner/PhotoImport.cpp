#include "scanner/PhotoImport.h"

#include "screens/PixelImage.h"
#include "screens/Presentation.h"

#include <kestrelid/ImageFile.h>

#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <exception>
#include <memory>
#include <QApplication>
#include <QClipboard>
#include <QDragEnterEvent>
#include <QDropEvent>
#include <QFile>
#include <QFileDialog>
#include <QFileInfo>
#include <QImage>
#include <QMimeData>
#include <QPromise>
#include <QQmlComponent>
#include <QQmlEngine>
#include <QQuickWindow>
#include <QThreadPool>
#include <QWindow>
#include <span>
#include <utility>

namespace kestrelid::scanner {

namespace {

using Problem = PhotoImport::Problem;
using Outcome = std::variant<Image, Problem>;

constexpr qsizetype kFormatBytes = 16;  // enough for isImageFormat()

// What decodeImage() reads, best first.
constexpr const char* kPictureTypes[] = {"image/jpeg", "image/png",  "image/webp",
                                         "image/tiff", "image/heic", "image/heif"};

// Only where the module is installed; the program needs it for nothing else.
constexpr auto kQuickDialog = "import QtQuick.Dialogs\nFileDialog {}";

QStringList nameFilters() {
    const QStringList endings = {"jpg", "jpeg", "png", "webp", "tif", "tiff", "heic", "heif"};
    QStringList patterns;
    for (const QString& ending : endings)
        patterns << "*." + ending << "*." + ending.toUpper();
    return {PhotoImport::tr("Pictures (%1)").arg(patterns.join(QLatin1Char(' '))),
            PhotoImport::tr("All files (*)")};
}

std::span<const std::byte> bytesOf(const QByteArray& bytes) {
    return std::as_bytes(std::span(bytes.data(), static_cast<std::size_t>(bytes.size())));
}

Outcome outcomeOf(const ImageResult& result) {
    if (const auto* image = std::get_if<Image>(&result))
        return *image;
    return std::get<ImageError>(result).isOutOfMemory ? Problem::OutOfMemory : Problem::Unreadable;
}

Outcome readFile(const QString& path) {
    if (!QFileInfo(path).isFile())
        return Problem::NotAFile;
    QFile file(path);
    if (!file.open(QIODevice::ReadOnly))
        return Problem::Unreadable;
    if (!isImageFormat(bytesOf(file.read(kFormatBytes))))
        return Problem::NotAPicture;
    return outcomeOf(readImage(QFile::encodeName(path).toStdString()));
}

Outcome readBytes(const QByteArray& bytes) {
    if (!isImageFormat(bytesOf(bytes.left(kFormatBytes))))
        return Problem::NotAPicture;
    if (static_cast<std::size_t>(bytes.size()) > kMaximumFileSize)
        return Problem::Unreadable;
    return outcomeOf(decodeImage(bytesOf(bytes)));
}

// From a program that gives pixels, not a file: the same limits.
Outcome outcomeOf(const QImage& pixels) {
    if (pixels.isNull())
        return Problem::NotAPicture;
    if (std::int64_t{pixels.width()} * pixels.height() > kMaximumPixels ||
        std::max(pixels.width(), pixels.height()) > kMaximumSide)
        return Problem::Unreadable;
    Image image = screens::imageOf(pixels);
    return image.bitmap() ? Outcome(std::move(image)) : Outcome(Problem::OutOfMemory);
}

bool holdsPhoto(const QMimeData& data) {
    return data.hasUrls() || data.hasImage();
}

}  // namespace

PhotoImport::PhotoImport(QQuickItem* parent) : QQuickItem(parent) {
    setFlag(ItemAcceptsDrops);
    connect(&reading_, &QFutureWatcherBase::finished, this, &PhotoImport::finish);
}

PhotoImport::~PhotoImport() {
    delete dialog_;
}

void PhotoImport::componentComplete() {
    QQuickItem::componentComplete();
    hasDialog_ = qobject_cast<QApplication*>(QCoreApplication::instance()) != nullptr;
    if (!hasDialog_ && qmlEngine(this)) {
        QQmlComponent component(qmlEngine(this));
        component.setData(kQuickDialog, {});
        hasDialog_ = component.isReady();
    }
    emit dialogChanged();
}

void PhotoImport::openDialog() {
    if (qobject_cast<QApplication*>(QCoreApplication::instance()))
        return openWidgetDialog();
    if (!hasDialog_)
        return;
    if (!dialog_) {
        QQmlComponent component(qmlEngine(this));
        component.setData(kQuickDialog, {});
        dialog_ = component.createWithInitialProperties(
            {{QStringLiteral("nameFilters"), nameFilters()},
             {QStringLiteral("parentWindow"), QVariant::fromValue<QWindow*>(window())}});
        // The type is known at run time only.
        if (dialog_)
            connect(dialog_, SIGNAL(accepted()), this, SLOT(openChosen()));
    }
    if (dialog_)
        QMetaObject::invokeMethod(dialog_, "open");
}

void PhotoImport::openChosen() {
    if (dialog_)
        open(dialog_->property("selectedFile").toUrl());
}

void PhotoImport::openWidgetDialog() {
    if (auto* shown = qobject_cast<QWidget*>(dialog_)) {
        shown->raise();
        shown->activateWindow();
        return;
    }
    QWidget* parent = window() ? screens::widgetShowing(*window()) : nullptr;
    auto* dialog = new QFileDialog(parent ? parent->window() : nullptr, tr("Use a picture"));
    dialog_ = dialog;
    dialog->setObjectName(QStringLiteral("pictureDialog"));
    dialog->setAttribute(Qt::WA_DeleteOnClose);
    dialog->setFileMode(QFileDialog::ExistingFile);
    dialog->setNameFilters(nameFilters());
    connect(dialog, &QFileDialog::fileSelected, this,
            [this](const QString& path) { open(QUrl::fromLocalFile(path)); });
    dialog->setModal(false);
    // Above the screen, where that has a window of its own.
    if (!parent && window() && dialog->winId() != 0 && dialog->windowHandle())
        dialog->windowHandle()->setTransientParent(window());
    dialog->show();
}

bool PhotoImport::paste() {
    const QMimeData* data = QGuiApplication::clipboard()->mimeData();
    return data && take(*data);
}

void PhotoImport::open(const QUrl& url) {
    if (url.isLocalFile())
        return read([path = url.toLocalFile()] { return readFile(path); });
    cancel();
    emit failed(Problem::NotAFile);
}

// A file on this machine first: another program may give a small copy of it beside. What a browser
// gives has an address elsewhere, and the picture itself.
bool PhotoImport::take(const QMimeData& data) {
    const QList<QUrl> urls = data.urls();
    for (const QUrl& url : urls) {
        if (url.isLocalFile()) {
            open(url);
            return true;
        }
    }
    for (const char* type : kPictureTypes) {
        if (const QByteArray bytes = data.data(QString::fromLatin1(type)); !bytes.isEmpty()) {
            read([bytes] { return readBytes(bytes); });
            return true;
        }
    }
    if (data.hasImage()) {
        read([pixels = data.imageData().value<QImage>()] { return outcomeOf(pixels); });
        return true;
    }
    if (urls.isEmpty())
        return false;
    open(urls.first());
    return true;
}

void PhotoImport::read(std::function<Outcome()> work) {
    auto promise = std::make_shared<QPromise<Outcome>>();
    promise->start();
    // What was read before goes on to its end, and nobody hears of it.
    reading_.setFuture(promise->future());
    setBusy(true);
    QThreadPool::globalInstance()->start([promise, work = std::move(work)] {
        try {
            promise->addResult(work());
        } catch (const std::exception&) {
            promise->addResult(Problem::OutOfMemory);
        }
        promise->finish();
    });
}

void PhotoImport::finish() {
    if (!isBusy_)
        return;  // cancelled
    const Outcome outcome = reading_.result();
    setBusy(false);
    if (const auto* image = std::get_if<Image>(&outcome))
        emit imported(QVariant::fromValue(*image));
    else
        emit failed(std::get<Problem>(outcome));
}

void PhotoImport::cancel() {
    reading_.setFuture({});
    setBusy(false);
}

void PhotoImport::setBusy(bool isBusy) {
    if (std::exchange(isBusy_, isBusy) != isBusy)
        emit busyChanged();
}

void PhotoImport::setHovered(bool isHovered) {
    if (std::exchange(isHovered_, isHovered) != isHovered)
        emit hoveredChanged();
}

void PhotoImport::dragEnterEvent(QDragEnterEvent* event) {
    event->setAccepted(event->mimeData() && holdsPhoto(*event->mimeData()));
    if (!event->isAccepted())
        return;
    // The file stays where it is, whatever the other program proposes.
    event->setDropAction(Qt::CopyAction);
    setHovered(true);
}

void PhotoImport::dragMoveEvent(QDragMoveEvent* event) {
    event->setDropAction(Qt::CopyAction);
    event->accept();
}

void PhotoImport::dragLeaveEvent(QDragLeaveEvent*) {
    setHovered(false);
}

void PhotoImport::dropEvent(QDropEvent* event) {
    setHovered(false);
    event->setDropAction(Qt::CopyAction);
    event->setAccepted(event->mimeData() && take(*event->mimeData()));
}

}  // namespace kestrelid::scanner
