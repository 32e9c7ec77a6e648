#pragma once

#include <QNetworkReply>

// Whether a reply failed on the way (no connection, TLS, a body cut short, a
// cancel) rather than with an HTTP status the server chose to send.
inline bool isTransportFailure(QNetworkReply::NetworkError error)
{
    const int code = int(error);
    const bool contentStatus = code >= QNetworkReply::ContentAccessDenied && code <= QNetworkReply::UnknownContentError;
    const bool serverStatus = code >= QNetworkReply::InternalServerError && code <= QNetworkReply::UnknownServerError;
    return error != QNetworkReply::NoError && !contentStatus && !serverStatus;
}
