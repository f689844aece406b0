#pragma once

#include "apps/demo/PhotoJudge.h"

#include <functional>
#include <QLabel>
#include <QPushButton>
#include <QVBoxLayout>
#include <QWidget>

namespace kestrelid::demo {

// The verdict on the last photo, its reasons, and the way back.
class VerdictPage final : public QWidget {
    Q_OBJECT

public:
    VerdictPage(PhotoJudge& judge, std::function<void()> scanAgain)
        : judge_(judge), headline_(new QLabel), reasons_(new QLabel) {
        QFont text = font();
        text.setPixelSize(26);
        text.setBold(true);
        headline_->setFont(text);
        text.setPixelSize(15);
        text.setBold(false);
        reasons_->setFont(text);
        headline_->setAlignment(Qt::AlignCenter);
        headline_->setMargin(18);
        reasons_->setWordWrap(true);
        reasons_->setTextFormat(Qt::PlainText);
        reasons_->setMargin(20);
        auto* again = new QPushButton(tr("Scan again"));
        auto* layout = new QVBoxLayout(this);
        layout->setContentsMargins(0, 0, 0, 20);
        layout->addWidget(headline_);
        layout->addWidget(reasons_);
        layout->addStretch();
        layout->addWidget(again, 0, Qt::AlignHCenter);
        setFocusProxy(again);
        connect(again, &QPushButton::clicked, this, std::move(scanAgain));
        connect(&judge, &PhotoJudge::changed, this, &VerdictPage::follow);
        follow();
    }

private:
    void follow() {
        const char* color = judge_.isJudging()    ? "#8e8e93"
                            : judge_.isPassport() ? "#15803d"
                                                  : "#b91c1c";
        headline_->setStyleSheet(QString("color: white; background: %1").arg(color));
        headline_->setText(judge_.headline());
        reasons_->setText(judge_.reasons().join("\n\n"));
    }

    PhotoJudge& judge_;
    QLabel* headline_;
    QLabel* reasons_;
};

}  // namespace kestrelid::demo
