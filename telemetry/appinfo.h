#pragma once

#include <QString>

class SystemInfo;

// The program's own version texts, set when it is built.
QString appVersion();
QString appBuild();
// A version text, or `fallback` when it is empty.
QString versionOr(const char* text, const char* fallback);

// The system version as three numbers, e.g. 6.1.0 for "6.1-rc2" → 6.1.0.
QString osVersionString(const SystemInfo& system);
// The hardware model as UTF-8 up to the first NUL, bad bytes replaced.
QString deviceModel(const SystemInfo& system);
