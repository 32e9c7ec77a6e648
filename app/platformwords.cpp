#include "app/platformwords.h"

const PlatformWords& PlatformWords::macOS()
{
    static const PlatformWords words{
        .unpackFailedPrefix = QStringLiteral("Failed to mount DMG: "),
        .bundleMissing = QStringLiteral("Kestrio.app not found in DMG."),
    };
    return words;
}

const PlatformWords& PlatformWords::linuxDesktop()
{
    static const PlatformWords words{
        .unpackFailedPrefix = QStringLiteral("Failed to unpack the update archive: "),
        .bundleMissing = QStringLiteral("Kestrio.app not found in the update archive."),
    };
    return words;
}

const PlatformWords& PlatformWords::current()
{
#ifdef Q_OS_MACOS
    return macOS();
#else
    return linuxDesktop();
#endif
}
