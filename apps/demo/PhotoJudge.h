#pragma once

#include <kestrelid/DispatchQueue.h>
#include <kestrelid/Image.h>
#include <kestrelid/PassportDetector.h>

#include <memory>
#include <QObject>
#include <QString>
#include <QStringList>

namespace kestrelid::demo {

// Asks the detector about photos, and words what it says. Main thread.
class PhotoJudge : public QObject {
    Q_OBJECT
    Q_PROPERTY(bool isJudging READ isJudging NOTIFY changed)
    Q_PROPERTY(bool isPassport READ isPassport NOTIFY changed)
    Q_PROPERTY(QString headline READ headline NOTIFY changed)
    Q_PROPERTY(QStringList reasons READ reasons NOTIFY changed)

public:
    explicit PhotoJudge(const PlatformServices& recognition);

    [[nodiscard]] bool isJudging() const { return isJudging_; }
    [[nodiscard]] bool isPassport() const { return isPassport_; }
    [[nodiscard]] QString headline() const { return headline_; }
    [[nodiscard]] QStringList reasons() const { return reasons_; }

    // Only the last photo gets a verdict.
    Q_INVOKABLE void judge(const kestrelid::Image& photo);

signals:
    void changed();

private:
    void show(const PassportValidationResult& result);

    const std::shared_ptr<DispatchQueue> background_;
    const std::shared_ptr<DispatchQueue> mainQueue_;
    const std::shared_ptr<PassportDetector> detector_;
    int newest_ = 0;
    bool isJudging_ = false;
    bool isPassport_ = false;
    QString headline_;
    QStringList reasons_;
};

}  // namespace kestrelid::demo
