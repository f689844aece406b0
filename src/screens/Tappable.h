#pragma once

#include <QQuickItem>
#include <QtQml/qqmlregistration.h>

namespace kestrelid::screens {

// The area of a control that takes touches, Tab, and the keys Space, Return and Enter. One that
// goes out of sight while it has the focus hands it to its screen: a key must not tap what nobody
// sees.
class Tappable : public QQuickItem {
    Q_OBJECT
    QML_ELEMENT

public:
    explicit Tappable(QQuickItem* parent = nullptr);

signals:
    void tapped();

protected:
    void focusInEvent(QFocusEvent* event) override;
    void itemChange(ItemChange change, const ItemChangeData& data) override;
    void keyPressEvent(QKeyEvent* event) override;
};

}  // namespace kestrelid::screens
