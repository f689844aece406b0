#include "passport/PassportJudge.h"

#include "detection/Findings.h"
#include "passport/VerdictAdvice.h"
#include "passport/ZoneRows.h"
#include "preview/HostPicture.h"
#include "scanner/GuidanceLimitsValue.h"
#include "scanner/ZoneValue.h"
#include "screens/EngineContext.h"

#include <kestrelid/PassportDetector.h>
#include <kestrelid/screens/MainQueue.h>

#include <algorithm>
#include <array>
#include <cstdio>
#include <exception>
#include <mutex>
#include <QDate>
#include <QJSEngine>
#include <QJSValue>
#include <QLocale>
#include <QPointer>
#include <QPointF>
#include <QQmlEngine>
#include <QQmlInfo>
#include <QVariantMap>
#include <stop_token>
#include <string>
#include <string_view>
#include <utility>

namespace kestrelid::passport {

namespace {

// A person reads 33 as no year. A host's own day holds.
ZoneRules asOfToday(ZoneRules rules) {
    const QDate today = QDate::currentDate();
    if (!rules.asOf)
        rules.asOf = CalendarDay{today.year(), today.month(), today.day()};
    return rules;
}

using Console = std::function<void(std::string_view line)>;

// What the detector's console told during one examination. Thread: any.
class Failures {
public:
    void note(std::string_view line) {
        const bool isOfZone = line.starts_with(detection::kZoneRequestFailed);
        const std::lock_guard lock(mutex_);
        std::string& first = isOfZone ? ofZone_ : ofVerdict_;
        if (first.empty())
            first = line;
    }

    [[nodiscard]] std::string ofVerdict() const { return read(ofVerdict_); }
    [[nodiscard]] std::string ofZone() const { return read(ofZone_); }

private:
    [[nodiscard]] std::string read(const std::string& line) const {
        const std::lock_guard lock(mutex_);
        return line;
    }

    mutable std::mutex mutex_;
    std::string ofVerdict_;
    std::string ofZone_;
};

// Notes each line and passes it on to where it would have gone.
Console noting(const std::shared_ptr<Failures>& failures, Console host) {
    return [failures, host = std::move(host)](std::string_view line) {
        failures->note(line);
        if (host)
            return host(line);
        const std::string whole = std::string(line) + '\n';
        std::fputs(whole.c_str(), stdout);
        std::fflush(stdout);
    };
}

constexpr std::array<std::pair<const char*, PassportProof>, 3> kProofs{
    {{"verdict", PassportProof::verdict},
     {"strictZone", PassportProof::strictZone},
     {"both", PassportProof::both}}};

QString textOf(std::string_view text) {
    return QString::fromUtf8(text.data(), static_cast<qsizetype>(text.size()));
}

}  // namespace

struct PassportJudge::Outcome {
    std::optional<PassportScanResult> result{};
    std::string error{};
};

// Released on the main thread; that gives the detector's work up.
struct PassportJudge::Judging {
    std::shared_ptr<PassportDetector> detector;
    std::stop_source stop{};

    ~Judging() { stop.request_stop(); }
};

PassportJudge::PassportJudge(QObject* parent) : QObject(parent), mainQueue_(makeQtMainQueue()) {}

PassportJudge::~PassportJudge() = default;

QString PassportJudge::proof() const {
    const auto* named =
        std::ranges::find(kProofs, proof_, [](const auto& row) { return row.second; });
    return QString::fromLatin1(named->first);
}

void PassportJudge::setProof(const QString& proof) {
    const auto* named = std::ranges::find_if(
        kProofs, [&](const auto& row) { return proof == QLatin1String(row.first); });
    const PassportProof chosen = named == kProofs.end() ? PassportProof::verdict : named->second;
    if (std::exchange(proof_, chosen) != chosen)
        emit wishesChanged();
}

void PassportJudge::forget() {
    judging_.reset();
    result_.reset();
    error_.clear();
}

void PassportJudge::cancel() {
    forget();
    emit changed();
}

void PassportJudge::judge(const QVariant& picture) {
    forget();
    begin(picture);
    emit changed();
}

void PassportJudge::begin(const QVariant& picture) {
    const auto judging = std::make_shared<Judging>();
    judging_ = judging;
    // The newest photo's own words are the only ones that are listened to.
    const auto tell = [mainQueue = mainQueue_, self = QPointer<PassportJudge>(this),
                       weak = std::weak_ptr(judging)](Outcome outcome) {
        mainQueue->async([self, weak, outcome = std::move(outcome)] {
            if (self && self->judging_ && self->judging_ == weak.lock())
                self->take(outcome);
        });
    };

    QQmlEngine* engine = qmlEngine(this);
    if (!engine)
        return tell({.error = "there is no engine"});
    auto& context = screens::EngineContext::of(*engine);
    PlatformServices services = context.recognition();
    const auto failures = std::make_shared<Failures>();
    services.console = noting(failures, std::move(services.console));
    if (!readsZone_ && proof_ == PassportProof::verdict)
        services.zones = nullptr;
    const std::shared_ptr<DispatchQueue> queue = services.queue;
    judging->detector = PassportDetector::create(std::move(services));
    if (!judging->detector)
        return tell({.error = "there is not enough memory to recognise anything"});

    const ExaminationOptions options{.zoneRules = asOfToday(context.zoneRules()),
                                     .stop = judging->stop.get_token()};
    const auto examine = [tell, failures, options, source = preview::hostPicture(picture),
                          needsZone = proof_ != PassportProof::verdict,
                          weak = std::weak_ptr(judging->detector)] {
        if (options.stop.stop_requested())
            return;
        const ImageResult read = preview::imageFrom(source);
        if (const auto* error = std::get_if<ImageError>(&read))
            return tell({.error = error->cause});
        const Image photo = std::get<Image>(read).upright();
        const auto answer = [tell, failures, photo, needsZone](const Examination& examination) {
            Outcome outcome{.error = failures->ofVerdict()};
            if (outcome.error.empty()) {
                outcome.error = failures->ofZone();
                if (outcome.error.empty() || !needsZone)
                    outcome.result = PassportScanResult{photo, examination};
            }
            tell(std::move(outcome));
        };
        if (const auto detector = weak.lock())
            detector->examine(photo, answer, options);
    };
    try {
        queue->async([examine, tell] {
            try {
                examine();
            } catch (const std::exception&) {
                tell({.error = "there is not enough memory for this picture"});
            }
        });
    } catch (const std::exception&) {
        tell({.error = "there is not enough memory to recognise anything"});
    }
}

void PassportJudge::take(const Outcome& outcome) {
    judging_.reset();
    result_ = outcome.result;
    error_ = QString::fromStdString(outcome.error);
    const QPointer<PassportJudge> self = this;
    emit changed();
    if (self)
        emit finished();
}

void PassportJudge::complete(const QVariant& completion) {
    const QPointer<PassportJudge> self = this;
    if (completion.metaType() == QMetaType::fromType<PassportScanCompletion>()) {
        // Copies: the host may change or release either.
        const auto function = completion.value<PassportScanCompletion>();
        const auto result = result_;
        if (function)
            function(result);
    } else if (completion.metaType() == QMetaType::fromType<QJSValue>()) {
        const auto function = completion.value<QJSValue>();
        const QPointer<QQmlEngine> engine = qmlEngine(this);
        QJSValue given(QJSValue::NullValue);
        if (result_ && engine)
            given = engine->toScriptValue(
                QVariant(QVariantMap{{QStringLiteral("photo"), photo()},
                                     {QStringLiteral("isPassport"), isPassport()},
                                     {QStringLiteral("isTrusted"), isTrusted()},
                                     {QStringLiteral("confidence"), confidence()},
                                     {QStringLiteral("reasons"), reasons()},
                                     {QStringLiteral("text"), text()},
                                     {QStringLiteral("zone"), zone()},
                                     {QStringLiteral("outline"), outline()}}));
        const QJSValue answer = function.isCallable() ? function.call({given}) : QJSValue();
        if (answer.isError() && engine)
            qmlWarning(engine) << answer.toString();
    }
    if (self)
        emit completed();
}

bool PassportJudge::isPassport() const {
    return result_ && result_->examination.isPassport(proof_);
}

bool PassportJudge::isTrusted() const {
    return result_ && result_->examination.strictPassportZone();
}

double PassportJudge::confidence() const {
    return result_ ? result_->examination.verdict.confidence() : 0.0;
}

QStringList PassportJudge::reasons() const {
    QStringList reasons;
    if (result_) {
        for (const std::string& reason : result_->examination.verdict.reasons())
            reasons << QString::fromStdString(reason);
    }
    return reasons;
}

QString PassportJudge::text() const {
    return result_ ? QString::fromStdString(result_->examination.verdict.recognizedText())
                   : QString();
}

const MachineReadableZone* PassportJudge::shownZone() const {
    if (!result_ || result_->examination.zones.empty())
        return nullptr;
    const MachineReadableZone* strict = result_->examination.strictPassportZone();
    return strict ? strict : &result_->examination.zones.front();
}

QVariant PassportJudge::zone() const {
    const MachineReadableZone* zone = shownZone();
    return zone ? scanner::zoneValue(*zone, zone->isTrustworthy(), 1)
                : QVariant::fromValue(nullptr);
}

QVariantList PassportJudge::fields() const {
    const MachineReadableZone* zone = shownZone();
    return zone ? zoneRows(*zone, QLocale()) : QVariantList();
}

QVariantList PassportJudge::outline() const {
    QVariantList points;
    if (!result_ || !result_->examination.chosenOutline)
        return points;
    const Examination& examination = result_->examination;
    for (const NormalizedPoint& corner : examination.outlines[*examination.chosenOutline].corners)
        points << QPointF(corner.x, 1.0 - corner.y);
    return points;
}

QStringList PassportJudge::advice() const {
    QStringList keys;
    if (!result_)
        return keys;
    // A zone that could not be looked for is not for the person to mend.
    const VerdictRules rules{.proof = proof_,
                             .readsZone = readsZone_ && error_.isEmpty(),
                             .limits = scanner::guidanceLimits(guidanceLimits_)};
    for (const VerdictAdvice advice : adviceFor(result_->examination, rules))
        keys << textOf(keyOf(advice));
    return keys;
}

QVariant PassportJudge::photo() const {
    return result_ ? QVariant::fromValue(result_->photo) : QVariant();
}

}  // namespace kestrelid::passport
