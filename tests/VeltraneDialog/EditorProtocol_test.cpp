#include "VeltraneDialog/EditorProtocol.h"

#include <gtest/gtest.h>

#include <string>

namespace Veltrane::ODBC {
namespace {

EditorMessage Decode(std::string_view in_bytes) {
    const std::span<const char> bytes(in_bytes.data(), in_bytes.size());
    const std::size_t size = EditorPayloadSize(bytes.first(EDITOR_HEADER_SIZE));
    if (size != bytes.size() - EDITOR_HEADER_SIZE) {
        throw std::logic_error("the case has a wrong length");
    }
    return DecodeEditorMessage(bytes.first(EDITOR_HEADER_SIZE), bytes.subspan(EDITOR_HEADER_SIZE));
}

std::string Encode(const EditorMessage& in_message) {
    SecretBytes bytes = EncodeEditorMessage(in_message);
    return {bytes.Get().data(), bytes.Get().size()};
}

TEST(EditorProtocol, HasThisFormOnTheWire) {
    EditorMessage message;
    message.m_kind = EditorMessageKind::SHOW;
    message.m_values.m_dsn = u"ab";
    message.m_values.m_database = u"ü";
    const std::string expected(
        "VDE1\1\0\0\0\x20\0\0\0"
        "\2\0\0\0ab\0\0\0\0\0\0\0\0\0\0\0\0\0\0\0\0\0\0\0\0\2\0\0\0\xC3\xBC",
        44);
    EXPECT_EQ(Encode(message), expected);
    message.m_kind = EditorMessageKind::CANCEL;
    EXPECT_EQ(Encode(message), std::string("VDE1\3\0\0\0\0\0\0\0", 12));
    message.m_kind = EditorMessageKind::UNAVAILABLE;
    message.m_reason = "why";
    EXPECT_EQ(Encode(message), std::string("VDE1\4\0\0\0\7\0\0\0\3\0\0\0why", 19));
    EXPECT_EQ(Decode(Encode(message)).m_reason, "why");
    message.m_kind = EditorMessageKind::ASK;
    message.m_question = {"a %s?", "ü"};
    EXPECT_EQ(Encode(message),
              std::string("VDE1\5\0\0\0\x0F\0\0\0\5\0\0\0a %s?\2\0\0\0\xC3\xBC", 27));
    EXPECT_EQ(Decode(Encode(message)).m_question.m_name, "ü");
}

TEST(EditorProtocol, RefusesBytesThatAreNoMessage) {
    const std::tuple<const char*, std::string> cases[] = {
        {"bytes that are no message", std::string("VDE2\3\0\0\0\0\0\0\0", 12)},
        {"a message of an unknown kind", std::string("VDE1\7\0\0\0\0\0\0\0", 12)},
        {"a message of an unknown kind", std::string("VDE1\3\1\0\0\0\0\0\0", 12)},
        {"more bytes than its message has texts", std::string("VDE1\3\0\0\0\1\0\0\0x", 13)},
        {"a text without its length", std::string("VDE1\5\0\0\0\4\0\0\0\0\0\0\0", 16)},
        {"a text without its length", std::string("VDE1\2\0\0\0\0\0\0\0", 12)},
        {"a text without its length", std::string("VDE1\4\0\0\0\3\0\0\0\1\0\0", 15)},
        {"a text longer than its message", std::string("VDE1\4\0\0\0\5\0\0\0\2\0\0\0x", 17)},
        {"a text longer than its message", std::string("VDE1\4\0\0\0\4\0\0\0\xFF\xFF\xFF\xFF", 16)},
        {"a text that is not UTF-8", std::string("VDE1\4\0\0\0\5\0\0\0\1\0\0\0\xFF", 17)},
        {"more bytes than its message has texts", std::string("VDE1\4\0\0\0\5\0\0\0\0\0\0\0x", 17)},
        {"a message of more than 4 MiB", std::string("VDE1\3\0\0\0\1\0\x40\0", 12)},
    };
    for (const auto& [reason, bytes] : cases) {
        SCOPED_TRACE(reason);
        try {
            Decode(bytes);
            ADD_FAILURE() << "accepted";
        } catch (const EditorProtocolError& error) {
            EXPECT_STREQ(error.what(), reason);
        }
    }
}

TEST(EditorProtocol, ADamagedMessageIsRefusedOrReadAsItIs) {
    EditorMessage message;
    message.m_kind = EditorMessageKind::SHOW;
    message.m_values.m_server = u"bi ü€";
    const std::string whole = Encode(message);
    std::size_t accepted = 0;
    for (std::size_t at = 256 * EDITOR_HEADER_SIZE; at < 256 * whole.size(); ++at) {
        std::string bytes = whole;
        bytes[at / 256] = static_cast<char>(at % 256);
        try {
            EXPECT_EQ(Encode(Decode(bytes)), bytes) << at;
            ++accepted;
        } catch (const EditorProtocolError&) {
        }
    }
    EXPECT_GT(accepted, whole.size());
}

TEST(EditorProtocol, TextsThatTheOtherEndRefusesAreNotSent) {
    EditorMessage message;
    message.m_kind = EditorMessageKind::UNAVAILABLE;
    message.m_reason = std::string(MAX_EDITOR_PAYLOAD_SIZE - 4, 'x');
    EXPECT_EQ(Decode(Encode(message)).m_reason.size(), message.m_reason.size());
    message.m_reason += 'x';
    EXPECT_THROW(EncodeEditorMessage(message), EditorProtocolError);
}

}  // namespace
}  // namespace Veltrane::ODBC
