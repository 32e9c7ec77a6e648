// Feeds arbitrary bytes to the manifest decoder and the version comparison.
#include "base/updatecheckresult.h"
#include "update/versioncomparison.h"
#include "update/versionmanifest.h"

#include <cstddef>
#include <cstdint>
#include <cstdlib>

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size)
{
    const QByteArray body(reinterpret_cast<const char*>(data), qsizetype(size));
    auto decoded = VersionManifest::decode(body);
    if (auto* manifest = std::get_if<VersionManifest>(&decoded)) {
        if (manifest->version.isNull() || manifest->downloadUrl.isNull())
            std::abort(); // a decoded manifest always has its required texts
        // A result carries the manifest's version and address as they were.
        if (auto result = checkResultOf(*manifest, QStringLiteral("1.0.0"))) {
            if (result->latestVersion != manifest->version || !result->downloadURL.isValid())
                std::abort();
        }
    } else if (std::get<VersionManifest::DecodeError>(decoded).description.isEmpty()) {
        std::abort(); // every failure says what went wrong
    }

    const QString text = QString::fromUtf8(body);
    const qsizetype third = text.size() / 3;
    const QString a = text.left(third), b = text.mid(third, third), c = text.mid(2 * third);
    versionComponents(text);
    // Strictly newer is an order: antisymmetric, irreflexive, transitive.
    if (isNewerVersion(a, b) && isNewerVersion(b, a))
        std::abort();
    if (isNewerVersion(a, a))
        std::abort();
    if (isNewerVersion(a, b) && isNewerVersion(b, c) && !isNewerVersion(a, c))
        std::abort();
    // Missing pieces count as 0: a trailing ".0" changes nothing.
    if (isNewerVersion(a + QStringLiteral(".0"), a) || isNewerVersion(a, a + QStringLiteral(".0")))
        std::abort();
    return 0;
}
