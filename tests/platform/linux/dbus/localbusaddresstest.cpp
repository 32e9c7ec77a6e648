#include "platform/linux/dbus/localbusaddress.h"

#include <gtest/gtest.h>

// Addresses as the accessibility bus, the display and applications hand them
// over. libdbus would connect to every one of them; only local sockets pass.
TEST(LocalBusAddress, OnlyOneUnixSocketPasses)
{
    const struct {
        const char* address;
        bool accepted;
    } cases[]{
        // What at-spi-bus-launcher and GTK's bridge answer.
        {"unix:path=/run/user/1000/at-spi/bus_0,guid=f21808b5abb90b0a7ed25ee06b062299", true},
        {"unix:path=/run/user/1000/at-spi2-socket-11837", true},
        {"unix:abstract=/tmp/dbus-Xb3kLq", true},
        {"unix:path=/tmp/with%20space%2csocket", true},
        // Transports that run a program or leave the machine.
        {"unixexec:path=/bin/sh,argv0=sh,argv1=-c,argv2=id%3e/tmp/x", false},
        {"tcp:host=203.0.113.9,port=4444", false},
        {"nonce-tcp:host=localhost,port=4444,noncefile=/tmp/n", false},
        {"launchd:env=DBUS_LAUNCHD_SESSION_BUS_SOCKET", false},
        {"autolaunch:", false},
        {"systemd:", false},
        // A list: libdbus tries the next one when the first fails.
        {"unix:path=/nonexistent;unixexec:path=/bin/sh", false},
        {"unix:path=/run/user/1000/bus;", false},
        // Extra or doubled keys, and keys that make a server rather than name one.
        {"unix:path=/tmp/s,abstract=/tmp/t", false},
        {"unix:path=/tmp/s,path=/tmp/t", false},
        {"unix:path=/tmp/s,tmpdir=/tmp", false},
        {"unix:path=/tmp/s,argv0=sh", false},
        {"unix:tmpdir=/tmp", false},
        {"unix:runtime=yes", false},
        {"unix:path=/tmp/s,guid=nothex", false},
        {"unix:path=/tmp/s,guid=f21808b5abb90b0a7ed25ee06b062299,guid=f21808b5abb90b0a7ed25ee06b062299", false},
        // Malformed.
        {"", false},
        {"unix:", false},
        {"unix:path=", false},
        {"unix:path=relative/socket", false},
        {"unix:path=/tmp/s,", false},
        {"unix:=/tmp/s", false},
        {"unix:path=/tmp/bad%zzescape", false},
        {"unix:path=/tmp/new\nline", false},
        {"UNIX:path=/tmp/s", false},
    };
    for (const auto& c : cases) {
        const std::optional<LocalBusAddress> parsed = LocalBusAddress::parse(QString::fromUtf8(c.address));
        EXPECT_EQ(parsed.has_value(), c.accepted) << c.address;
        if (parsed) {
            EXPECT_EQ(parsed->text(), QString::fromUtf8(c.address));
        }
    }
}
