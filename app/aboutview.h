#pragma once

#include <QUrl>
#include <QWidget>

// Who made Kestrio and which version this is, with links to the maker's site.
class AboutView : public QWidget {
    Q_OBJECT

public:
    AboutView(QUrl bwkURL, QUrl productURL, QWidget* parent = nullptr);

    // The name, version and build shown, each with its fallback.
    static QString nameText(const QString& name);
    static QString versionText(const QString& version, const QString& build);

    const QUrl bwkURL;
    const QUrl productURL;
};
