#pragma once

#include <kestrelid/CameraOptions.h>

#include <QAbstractListModel>
#include <QtQml/qqmlregistration.h>
#include <vector>

namespace kestrelid::scanner {

// A camera manager's cameras, for QML: each row keeps its place in views while its camera comes
// and goes.
class CameraListModel : public QAbstractListModel {
    Q_OBJECT
    QML_ANONYMOUS

public:
    enum Role { name = Qt::UserRole, position, present, infrared, obstacle };

    using QAbstractListModel::QAbstractListModel;

    [[nodiscard]] int rowCount(const QModelIndex& parent = {}) const override;
    [[nodiscard]] QVariant data(const QModelIndex& index, int role) const override;
    [[nodiscard]] QHash<int, QByteArray> roleNames() const override;

    void follow(const std::vector<CameraDescription>& cameras);

private:
    void bringTo(int row, const CameraDescription& camera);

    std::vector<CameraDescription> cameras_;
};

}  // namespace kestrelid::scanner
