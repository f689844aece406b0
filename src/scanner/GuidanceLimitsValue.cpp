#include "scanner/GuidanceLimitsValue.h"

#include <QJSValue>
#include <QString>
#include <QVariantMap>

namespace kestrelid::scanner {

GuidanceLimits guidanceLimits(const QVariant& value) {
    const QVariantMap named = value.metaType() == QMetaType::fromType<QJSValue>()
                                  ? value.value<QJSValue>().toVariant().toMap()
                                  : value.toMap();
    GuidanceLimits limits;
    const auto take = [&](const char* name, double& limit) {
        bool isNumber = false;
        const double number = named.value(QString::fromLatin1(name)).toDouble(&isNumber);
        if (isNumber)
            limit = number;
    };
    take("leastBrightness", limits.leastBrightness);
    take("leastArea", limits.leastArea);
    take("greatestArea", limits.greatestArea);
    take("leastMargin", limits.leastMargin);
    take("mostGlare", limits.mostGlare);
    take("leastSharpness", limits.leastSharpness);
    take("mostMotion", limits.mostMotion);
    double hold = limits.hold.count();
    take("hold", hold);
    limits.hold = std::chrono::duration<double>(hold);
    return limits;
}

}  // namespace kestrelid::scanner
