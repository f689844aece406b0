#pragma once

#include "apps/demo/CameraChoice.h"

#include <QHBoxLayout>
#include <QLabel>
#include <QPushButton>
#include <QWidget>

namespace kestrelid::demo {

// Says which camera is in use, and lets the person choose another.
class TopBar final : public QWidget {
public:
    explicit TopBar(CameraChoice& cameras) {
        auto* note = new QLabel(cameras.note());
        note->setWordWrap(true);
        note->setTextFormat(Qt::PlainText);
        auto* choose = new QPushButton(tr("Camera..."));
        auto* layout = new QHBoxLayout(this);
        layout->addWidget(note, 1);
        layout->addWidget(choose);
        setMinimumHeight(52);
        connect(&cameras, &CameraChoice::noteChanged, note,
                [note, &cameras] { note->setText(cameras.note()); });
        connect(choose, &QPushButton::clicked, &cameras, [choose, &cameras] {
            cameras.openMenu(choose->mapToGlobal(choose->rect().bottomLeft()));
        });
    }
};

}  // namespace kestrelid::demo
