#pragma once

#include <QString>

#include <optional>

// A D-Bus address that another process handed over (the accessibility bus's
// launcher, an X root-window property, an application offering a connection
// of its own). libdbus connects to whatever an address names, and some
// transports run a program ("unixexec:") or reach across the network ("tcp:");
// nobody Kestrio talks to has a reason to offer anything but a local socket.
class LocalBusAddress {
public:
    // The address when it names exactly one unix socket, by path or abstract
    // name, with nothing else but the server's "guid" (which libdbus checks
    // the server against); otherwise nothing.
    static std::optional<LocalBusAddress> parse(const QString& text);

    // As given: what libdbus connects to.
    const QString& text() const { return text_; }

private:
    explicit LocalBusAddress(QString text) : text_(std::move(text)) {}
    QString text_;
};
