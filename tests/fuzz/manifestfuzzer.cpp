// Feeds arbitrary bytes to the manifest decoder and the version comparison.
#include "update/updatecheckresult.h"
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
        if (auto result = UpdateCheckResult::make(*manifest, QStringLiteral("1.0.0"))) {
            if (result->isNewer != isNewerVersion(manifest->version, QStringLiteral("1.0.0")))
                std::abort();
        }
    } else if (std::get<VersionManifest::DecodeError>(decoded).description.isEmpty()) {
        std::abort(); // every failure says what went wrong
    }

    const QString text = QString::fromUtf8(body);
    const qsizetype half = text.size() / 2;
    const QString a = text.left(half), b = text.mid(half);
    versionComponents(text);
    // Strictly newer is antisymmetric and irreflexive.
    if (isNewerVersion(a, b) && isNewerVersion(b, a))
        std::abort();
    if (isNewerVersion(a, a))
        std::abort();
    return 0;
}
