#include "update/updatecheckerror.h"

QString UpdateCheckError::description() const
{
    switch (kind) {
    case Kind::network: return QStringLiteral("Network error: ") + detail;
    case Kind::decode: return QStringLiteral("Could not read the update information: ") + detail;
    case Kind::invalidResponse: break;
    }
    return QStringLiteral("The update server returned an invalid response.");
}
