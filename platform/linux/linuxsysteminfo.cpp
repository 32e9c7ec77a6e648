// The Linux answers to SystemInfo: the one place that names this platform.
#include "platform/systeminfo.h"

#include <QFile>
#include <QLocale>

#include <sys/utsname.h>

namespace {

class LinuxSystemInfo final : public SystemInfo {
public:
    QString osName() const override { return QStringLiteral("Linux"); }
    QString sdkName() const override { return QStringLiteral("kestrio-linux"); }

    QString osVersion() const override
    {
        utsname names{};
        return uname(&names) == 0 ? QString::fromLocal8Bit(names.release) : QString();
    }

    QByteArray deviceModel() const override
    {
        QFile file(QStringLiteral("/sys/class/dmi/id/product_name"));
        if (!file.open(QIODevice::ReadOnly))
            return {};
        return file.readAll().trimmed();
    }

    QString localeIdentifier() const override
    {
        const QLocale locale = QLocale::system();
        return locale.language() == QLocale::C ? QStringLiteral("en_US_POSIX") : locale.name();
    }

    QString languageCode() const override
    {
        const QLocale locale = QLocale::system();
        return locale.language() == QLocale::C ? QString() : QLocale::languageToCode(locale.language());
    }
};

} // namespace

const SystemInfo& SystemInfo::current()
{
    static const LinuxSystemInfo info;
    return info;
}
