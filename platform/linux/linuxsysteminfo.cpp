#include "platform/linux/linuxsysteminfo.h"

#include <QFile>
#include <QLocale>

#include <sys/utsname.h>

QString LinuxSystemInfo::osName() const
{
    return QStringLiteral("Linux");
}

QString LinuxSystemInfo::sdkName() const
{
    return QStringLiteral("kestrio-linux");
}

QString LinuxSystemInfo::osVersion() const
{
    utsname names{};
    return uname(&names) == 0 ? QString::fromLocal8Bit(names.release) : QString();
}

QByteArray LinuxSystemInfo::deviceModel() const
{
    QFile file(QStringLiteral("/sys/class/dmi/id/product_name"));
    if (!file.open(QIODevice::ReadOnly))
        return {};
    return file.readAll().trimmed();
}

QString LinuxSystemInfo::localeIdentifier() const
{
    const QLocale locale = QLocale::system();
    return locale.language() == QLocale::C ? QStringLiteral("en_US_POSIX") : locale.name();
}

QString LinuxSystemInfo::languageCode() const
{
    const QLocale locale = QLocale::system();
    return locale.language() == QLocale::C ? QString() : QLocale::languageToCode(locale.language());
}
