#pragma once

#include <kestrelid/DispatchQueue.h>
#include <kestrelid/Examination.h>
#include <kestrelid/Image.h>
#include <kestrelid/screens/PassportScanController.h>

#include <memory>
#include <optional>
#include <QObject>
#include <QString>
#include <QStringList>
#include <QtQml/qqmlregistration.h>
#include <QVariant>
#include <QVariantList>

namespace kestrelid::passport {

// Examines photos with the recognition that the screens of its engine share, and tells QML what was
// found. Only the last photo counts. Main thread; the work is done on others.
class PassportJudge : public QObject {
    Q_OBJECT
    // These count for the next photo.
    Q_PROPERTY(bool readsZone MEMBER readsZone_ NOTIFY wishesChanged)
    Q_PROPERTY(QString proof READ proof WRITE setProof NOTIFY wishesChanged)
    Q_PROPERTY(QVariant guidanceLimits MEMBER guidanceLimits_ NOTIFY wishesChanged)

    Q_PROPERTY(bool isJudging READ isJudging NOTIFY changed)
    Q_PROPERTY(bool hasVerdict READ hasVerdict NOTIFY changed)
    // By the proof that was asked for.
    Q_PROPERTY(bool isPassport READ isPassport NOTIFY changed)
    // There is a strict zone of a passport.
    Q_PROPERTY(bool isTrusted READ isTrusted NOTIFY changed)
    Q_PROPERTY(double confidence READ confidence NOTIFY changed)
    Q_PROPERTY(QStringList reasons READ reasons NOTIFY changed)
    Q_PROPERTY(QString text READ text NOTIFY changed)
    // As DocumentScannerView.zone; the trusted one, else the first. Null: none was found.
    Q_PROPERTY(QVariant zone READ zone NOTIFY changed)
    // What that zone says, for people: see zoneRows().
    Q_PROPERTY(QVariantList fields READ fields NOTIFY changed)
    // Of the document: four points in shares of the photo from its top left; or none.
    Q_PROPERTY(QVariantList outline READ outline NOTIFY changed)
    // What would help: keyOf() each, the most pressing first.
    Q_PROPERTY(QStringList advice READ advice NOTIFY changed)
    // Why there is no verdict, or no zone although one was asked for; empty: nothing failed.
    Q_PROPERTY(QString error READ error NOTIFY changed)
    // Upright. Invalid before it was read.
    Q_PROPERTY(QVariant photo READ photo NOTIFY changed)
    QML_ELEMENT

public:
    explicit PassportJudge(QObject* parent = nullptr);
    ~PassportJudge() override;

    [[nodiscard]] QString proof() const;
    // "verdict", "strictZone" or "both"; anything else is "verdict".
    void setProof(const QString& proof);

    [[nodiscard]] bool isJudging() const { return judging_ != nullptr; }
    [[nodiscard]] bool hasVerdict() const { return result_.has_value(); }
    [[nodiscard]] bool isPassport() const;
    [[nodiscard]] bool isTrusted() const;
    [[nodiscard]] double confidence() const;
    [[nodiscard]] QStringList reasons() const;
    [[nodiscard]] QString text() const;
    // Made anew each time, as all that a document says: only the result is kept.
    [[nodiscard]] QVariant zone() const;
    [[nodiscard]] QVariantList fields() const;
    [[nodiscard]] QVariantList outline() const;
    [[nodiscard]] QStringList advice() const;
    [[nodiscard]] QString error() const { return error_; }
    [[nodiscard]] QVariant photo() const;

    // An Image, a QImage, or the URL of a local file. What was known is forgotten.
    Q_INVOKABLE void judge(const QVariant& picture);

    // Forgets all.
    Q_INVOKABLE void cancel();

    // Gives the result to completion, or nothing if there is no verdict: a function of JavaScript
    // gets an object or null, a PassportScanCompletion its own type. completion may release this;
    // completed() follows only if it has not.
    Q_INVOKABLE void complete(const QVariant& completion);

signals:
    void wishesChanged();
    void changed();
    // There is a verdict or an error.
    void finished();
    void completed();

private:
    struct Judging;  // one photo's way
    struct Outcome;

    void begin(const QVariant& picture);
    void take(const Outcome& outcome);
    void forget();
    [[nodiscard]] const MachineReadableZone* shownZone() const;

    const std::shared_ptr<DispatchQueue> mainQueue_;
    bool readsZone_ = true;
    PassportProof proof_ = PassportProof::verdict;
    QVariant guidanceLimits_;

    std::shared_ptr<Judging> judging_;
    std::optional<PassportScanResult> result_;
    QString error_;
};

}  // namespace kestrelid::passport
