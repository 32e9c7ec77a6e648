#pragma once

#include <QList>
#include <QString>

// Numeric pieces of a dotted version text. Empty pieces are dropped; a piece
// that is not a strict signed 64-bit decimal counts as 0.
QList<qint64> versionComponents(const QString& version);

// True when `candidate` is strictly newer than `current`, piece by piece,
// missing pieces counting as 0.
bool isNewerVersion(const QString& candidate, const QString& current);
