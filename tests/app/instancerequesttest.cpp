#include "app/instancerequest.h"

#include <gtest/gtest.h>

namespace {

using Kind = InstanceRequest::Kind;

TEST(InstanceRequest, ToggleCarriesItsTokenToTheRunningInstance)
{
    const InstanceRequest toggle{Kind::toggle, QStringLiteral("sway-token_1234:5678")};
    const auto decoded = InstanceRequest::decode(toggle.encode());
    ASSERT_TRUE(decoded);
    EXPECT_EQ(decoded->kind, Kind::toggle);
    EXPECT_EQ(decoded->activationToken, toggle.activationToken);

    const auto reopen = InstanceRequest::decode(InstanceRequest{}.encode());
    ASSERT_TRUE(reopen);
    EXPECT_EQ(reopen->kind, Kind::reopen);
    EXPECT_EQ(InstanceRequest::decode("toggle\n")->activationToken, QString());
}

TEST(InstanceRequest, WhatIsNoRequestIsIgnoredAndNoTokenIsPassedOnBroken)
{
    for (const QByteArray& line : {QByteArray("quit\n"), QByteArray(""), QByteArray("togglex\n"), QByteArray("\xff\xfe\n")})
        EXPECT_FALSE(InstanceRequest::decode(line)) << line.constData();

    // A token the desktop could not have made reaches nobody; the toggle still happens.
    for (const QByteArray& token : {QByteArray("two words"), QByteArray("tab\there"), QByteArray("caf\xc3\xa9"),
                                    QByteArray(InstanceRequest::kMaxTokenLength + 1, 'a')}) {
        const auto decoded = InstanceRequest::decode("toggle " + token + "\n");
        ASSERT_TRUE(decoded) << token.constData();
        EXPECT_EQ(decoded->kind, Kind::toggle);
        EXPECT_EQ(decoded->activationToken, QString()) << token.constData();
    }
    // And none is sent.
    EXPECT_EQ((InstanceRequest{Kind::toggle, QStringLiteral("a b")}.encode()), "toggle\n");
}

} // namespace
