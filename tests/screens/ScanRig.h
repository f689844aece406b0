#pragma once

#include "tests/screens/FakeCamera.h"
#include "tests/screens/ShownScreen.h"
#include "tests/support/FakeServices.h"

#include <kestrelid/screens/PassportScanController.h>

#include <algorithm>
#include <gtest/gtest.h>
#include <QCoreApplication>
#include <QEvent>
#include <QImage>
#include <QPainter>
#include <QPolygonF>
#include <QTransform>
#include <string>
#include <vector>

namespace kestrelid::test {

inline const std::vector<std::string> kPassportWords{"PASSPORT", "NATIONALITY", "DATE OF BIRTH",
                                                     "SURNAME"};

// Finds in every picture what the test puts there, or fails as it says.
struct PageOutlines final : RectangleService {
    RectangleResult perform(const Bitmap&, const RectangleRequest&) override {
        ++requests;
        if (failure.empty())
            return seen;
        return RequestError{.description = failure};
    }

    std::vector<RectangleObservation> seen;
    std::string failure;
    int requests = 0;
};

// A camera and a recognition that obey the test, for the whole way of a passport scan.
struct ScanRig {
    static constexpr QSize kPhoto{640, 480};

    // Of the page in the photo, from its top left.
    static QPolygonF corners() {
        return QList<QPointF>{{130, 90}, {540, 60}, {575, 400}, {95, 380}};
    }

    FakeCamera camera;
    std::shared_ptr<ManualQueue> recognition = std::make_shared<ManualQueue>();
    std::shared_ptr<PageOutlines> outlines = std::make_shared<PageOutlines>();
    std::shared_ptr<FakeText> text = std::make_shared<FakeText>(kPassportWords);
    std::shared_ptr<FakeZones> zones = std::make_shared<FakeZones>();
    std::shared_ptr<std::string> console = std::make_shared<std::string>();  // what it was told

    ScanRig() {
        outlines->seen.push_back(page());
        zones->seen.push_back(clearReading(kSpecimenZone));
    }
    ~ScanRig() { recognition->clear(); }

    [[nodiscard]] ScannerCamera scannerCamera() const {
        ScannerCamera given = camera.scannerCamera();
        given.recognition = PlatformServices{
            .rectangles = outlines,
            .text = text,
            .queue = recognition,
            .console = [console = console](std::string_view line) { *console += line; },
            .zones = zones};
        given.zoneRules.asOf = CalendarDay{2012, 1, 1};
        return given;
    }

    [[nodiscard]] static RectangleObservation page() {
        RectangleObservation found{
            .boundingBox = {0.15, 0.17, 0.75, 0.7}, .corners = {}, .confidence = 1.0f};
        std::ranges::transform(corners(), found.corners.begin(), [](const QPointF& at) {
            return NormalizedPoint{at.x() / kPhoto.width(), 1.0 - at.y() / kPhoto.height()};
        });
        return found;
    }

    // A drawn page on a table, seen from the side.
    [[nodiscard]] static Image photo() {
        const QRectF sheet(0, 0, 250, 176);
        QImage drawn(kPhoto, QImage::Format_RGB32);
        drawn.fill(QColor(84, 66, 52));
        QPainter painter(&drawn);
        painter.setRenderHint(QPainter::Antialiasing);
        QTransform slanted;
        QPolygonF flat(sheet);
        flat.removeLast();  // where it began
        QTransform::quadToQuad(flat, corners(), slanted);
        painter.setTransform(slanted);
        painter.fillRect(sheet, QColor(226, 232, 240));
        painter.fillRect(QRectF(12, 34, 60, 78), QColor(150, 160, 176));
        for (int line = 0; line < 6; ++line)
            painter.fillRect(QRectF(86, 36 + 13 * line, 60 + 37 * line % 80, 5),
                             QColor(70, 80, 96));
        for (int line = 0; line < 2; ++line)
            for (int at = 0; at < 44; ++at)
                painter.fillRect(QRectF(12 + 5.2 * at, 138 + 14 * line, 3.4, 7),
                                 QColor(40, 44, 52));
        painter.fillRect(QRectF(12, 10, 90, 10), QColor(170, 40, 40));
        painter.end();
        const auto held = std::make_shared<const QImage>(drawn);
        return Image(*Bitmap::wrap(held->width(), held->height(), held->bytesPerLine(),
                                   PixelFormat::bgra8,
                                   std::shared_ptr<const std::byte[]>(
                                       held, reinterpret_cast<const std::byte*>(held->constBits())),
                                   static_cast<std::size_t>(held->sizeInBytes())));
    }

    // The camera's answer to the one who asked for a photo.
    void answer(bool works = true) const {
        camera.pass();
        const auto output = camera.platform->photoOutput.lock();
        ASSERT_TRUE(output && !output->requests.empty()) << "nobody asked for a photo";
        if (works)
            output->finish({.fileDataRepresentation = {}, .image = photo()});
        else
            camera.refusePhotos();
        camera.otherQueues->runAll();
        camera.mainQueue->runAll();
        settle();
        QCoreApplication::sendPostedEvents(nullptr, QEvent::DeferredDelete);
    }

    // The verdict on what was asked for.
    void recognise() const {
        recognition->runAll();
        settle();
    }

    // Clicks a button, or what it calls its area.
    static void tap(ShownScreen& screen, const QString& name, const QString& area = "area") {
        QQuickItem* button = screen.item(name);
        ASSERT_TRUE(button) << name.toStdString() << " is not on this page";
        // Columns and grids place what is in them before the next frame, not at once.
        const QRectF window(QPointF(), screen.root()->size());
        EXPECT_TRUE(waitFor([&] { return window.contains(sceneRect(*button)); }))
            << name.toStdString() << " is not in sight";
        click(findItem(button, area));
    }

    // From the scanning page to the preview, or to the page that says why not.
    void takePhoto(ShownScreen& screen, bool works = true) const {
        camera.makeReady();
        tap(screen, "captureArea", "captureArea");
        answer(works);
    }

    // From the scanning page to the result.
    void scan(ShownScreen& screen) const {
        takePhoto(screen);
        tap(screen, "confirm");
        recognise();
    }
};

}  // namespace kestrelid::test
