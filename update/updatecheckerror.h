#pragma once

#include <QString>

// Why a check for updates found nothing to offer.
struct UpdateCheckError {
    enum class Kind { network, decode, invalidResponse };

    Kind kind = Kind::invalidResponse;
    QString detail; // the underlying error's own description

    // The text shown to the user.
    QString description() const;

    friend bool operator==(const UpdateCheckError&, const UpdateCheckError&) = default;
};
