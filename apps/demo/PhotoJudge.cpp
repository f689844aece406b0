#include "apps/demo/PhotoJudge.h"

#include <kestrelid/screens/MainQueue.h>

#include <QPointer>

namespace kestrelid::demo {

PhotoJudge::PhotoJudge(const PlatformServices& recognition)
    : background_(recognition.queue), mainQueue_(makeQtMainQueue()),
      detector_(PassportDetector::create(recognition)) {}

void PhotoJudge::judge(const Image& photo) {
    isJudging_ = true;
    headline_ = tr("Judging...");
    reasons_.clear();
    emit changed();

    const auto tell = [mainQueue = mainQueue_, self = QPointer<PhotoJudge>(this),
                       number = ++newest_](const PassportValidationResult& result) {
        mainQueue->async([self, number, result] {
            if (self && self->newest_ == number)
                self->show(result);
        });
    };
    // Turning a large photo upright takes time. Weak: closing the window abandons the photo.
    background_->async([photo, tell, weak = std::weak_ptr<PassportDetector>(detector_)] {
        const Image upright = photo.upright();
        if (const auto detector = weak.lock())
            detector->validate(upright, tell);
    });
}

void PhotoJudge::show(const PassportValidationResult& result) {
    isJudging_ = false;
    isPassport_ = result.isPassport();
    headline_ = isPassport_ ? tr("A passport") : tr("Not a passport");
    for (const std::string& reason : result.reasons())
        reasons_.append(QString::fromStdString(reason));
    reasons_.append(tr("Confidence %1").arg(result.confidence(), 0, 'f', 2));
    emit changed();
}

}  // namespace kestrelid::demo
