#include "scanner/CameraListModel.h"

#include <algorithm>
#include <QString>
#include <string_view>

namespace kestrelid::scanner {

namespace {

QString text(std::string_view utf8) {
    return QString::fromUtf8(utf8.data(), static_cast<qsizetype>(utf8.size()));
}

}  // namespace

int CameraListModel::rowCount(const QModelIndex& parent) const {
    return parent.isValid() ? 0 : static_cast<int>(cameras_.size());
}

QVariant CameraListModel::data(const QModelIndex& index, int role) const {
    if (!checkIndex(index, CheckIndexOption::IndexIsValid))
        return {};
    const CameraDescription& camera = cameras_[static_cast<std::size_t>(index.row())];
    switch (role) {
    case name:
    case Qt::DisplayRole:
        return text(camera.name);
    case position:
        return text(keyOf(camera.position));
    case present:
        return camera.isPresent;
    case infrared:
        return camera.isInfrared;
    case obstacle:
        return text(camera.obstacle);
    default:
        return {};
    }
}

QHash<int, QByteArray> CameraListModel::roleNames() const {
    return {{name, "name"},
            {position, "position"},
            {present, "present"},
            {infrared, "infrared"},
            {obstacle, "obstacle"}};
}

void CameraListModel::follow(const std::vector<CameraDescription>& cameras) {
    const int count = static_cast<int>(cameras.size());
    for (int row = 0; row < count; ++row)
        bringTo(row, cameras[static_cast<std::size_t>(row)]);
    if (rowCount() > count) {
        beginRemoveRows({}, count, rowCount() - 1);
        cameras_.resize(cameras.size());
        endRemoveRows();
    }
}

// The rows above have their cameras already.
void CameraListModel::bringTo(int row, const CameraDescription& camera) {
    const auto place = cameras_.begin() + row;
    const auto known = std::find_if(place, cameras_.end(),
                                    [&](const auto& one) { return one.name == camera.name; });
    if (known == cameras_.end()) {
        beginInsertRows({}, row, row);
        cameras_.insert(place, camera);
        endInsertRows();
        return;
    }
    if (known != place) {
        const int from = static_cast<int>(known - cameras_.begin());
        beginMoveRows({}, from, from, {}, row);
        std::rotate(place, known, known + 1);
        endMoveRows();
    }
    if (*place == camera)
        return;
    *place = camera;
    emit dataChanged(index(row), index(row));
}

}  // namespace kestrelid::scanner
