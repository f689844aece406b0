#pragma once

#include <QMarginsF>
#include <QObject>
#include <QtQml/qqmlregistration.h>

namespace kestrelid::screens {

// Points of a screen's edges that a notch or a system bar covers: backgrounds reach under them,
// content does not. Set by the host.
class SafeAreaMargins : public QObject {
    Q_OBJECT
    Q_PROPERTY(qreal top MEMBER top_ NOTIFY changed)
    Q_PROPERTY(qreal left MEMBER left_ NOTIFY changed)
    Q_PROPERTY(qreal right MEMBER right_ NOTIFY changed)
    Q_PROPERTY(qreal bottom MEMBER bottom_ NOTIFY changed)
    QML_ANONYMOUS

public:
    using QObject::QObject;

    void set(const QMarginsF& margins) {
        top_ = margins.top();
        left_ = margins.left();
        right_ = margins.right();
        bottom_ = margins.bottom();
        emit changed();
    }

signals:
    void changed();

private:
    qreal top_ = 0.0;
    qreal left_ = 0.0;
    qreal right_ = 0.0;
    qreal bottom_ = 0.0;
};

}  // namespace kestrelid::screens
