#pragma once

#include <QString>

// The user-visible texts that name a platform's own things. The macOS words
// are the original texts; each other platform says the same in its own terms.
// Both tables sit side by side in platformwords.cpp.
struct PlatformWords {
    // Self-updater failures that name the release's package.
    QString unpackFailedPrefix; // followed by the tool's output or the reason
    QString bundleMissing;

    static const PlatformWords& macOS();
    static const PlatformWords& linuxDesktop();
    // The words of the platform this program was built for.
    static const PlatformWords& current();
};
