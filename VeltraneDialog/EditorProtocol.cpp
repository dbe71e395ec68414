#include "VeltraneDialog/EditorProtocol.h"

#include <algorithm>
#include <string_view>

#include "VeltraneDialog/DialogFields.h"
#include "VeltraneDialog/Utf8.h"
#include "VeltraneDialog/Wipe.h"

namespace Veltrane::ODBC {

namespace {

constexpr std::string_view MAGIC("VDE1");
constexpr std::size_t NUMBER_SIZE = 4;

std::uint32_t ReadNumber(std::span<const char> in_bytes) {
    std::uint32_t number = 0;
    for (std::size_t i = NUMBER_SIZE; i-- > 0;) {
        number = (number << 8) | static_cast<unsigned char>(in_bytes[i]);
    }
    return number;
}

/// Appends to a buffer that is large enough.
class Writer {
public:
    explicit Writer(std::span<char> out_bytes) : m_rest(out_bytes) {}

    void Bytes(std::string_view in_bytes) {
        std::copy(in_bytes.begin(), in_bytes.end(), m_rest.begin());
        m_rest = m_rest.subspan(in_bytes.size());
    }

    void Number(std::size_t in_number) {
        for (std::size_t i = 0; i < NUMBER_SIZE; ++i) {
            m_rest[i] = static_cast<char>((in_number >> (8 * i)) & 0xFF);
        }
        m_rest = m_rest.subspan(NUMBER_SIZE);
    }

    void Text(std::string_view in_text) {
        Number(in_text.size());
        Bytes(in_text);
    }

private:
    std::span<char> m_rest;
};

bool HasValues(EditorMessageKind in_kind) {
    return in_kind == EditorMessageKind::SHOW || in_kind == EditorMessageKind::OK;
}

class TextList {
public:
    TextList() { m_texts.reserve(DIALOG_FIELDS.size()); }
    TextList(const TextList&) = delete;
    TextList& operator=(const TextList&) = delete;
    ~TextList() { std::for_each(m_texts.begin(), m_texts.end(), Wipe<char>); }
    std::vector<std::string> m_texts;
};

void CollectTexts(const EditorMessage& in_message, TextList& out_list) {
    if (HasValues(in_message.m_kind)) {
        for (const DialogField& field : DIALOG_FIELDS) {
            const DialogString& value = in_message.m_values.*field.m_value;
            out_list.m_texts.push_back(EncodeUtf8(value ? *value : std::u16string_view()));
        }
    } else if (in_message.m_kind == EditorMessageKind::UNAVAILABLE) {
        out_list.m_texts.push_back(in_message.m_reason);
    } else if (in_message.m_kind == EditorMessageKind::ASK) {
        out_list.m_texts = {in_message.m_question.m_text, in_message.m_question.m_name};
    }
}

std::string_view TakeText(std::span<const char>& io_rest) {
    if (io_rest.size() < NUMBER_SIZE) {
        throw EditorProtocolError("a text without its length");
    }
    const std::size_t length = ReadNumber(io_rest);
    io_rest = io_rest.subspan(NUMBER_SIZE);
    if (length > io_rest.size()) {
        throw EditorProtocolError("a text longer than its message");
    }
    const std::string_view text(io_rest.data(), length);
    io_rest = io_rest.subspan(length);
    return text;
}

void DecodeText(std::string_view in_bytes, std::u16string& out_text) {
    if (!DecodeUtf8(in_bytes, out_text)) {
        throw EditorProtocolError("a text that is not UTF-8");
    }
}

std::string TakeUtf8(std::span<const char>& io_rest) {
    std::u16string checked;
    std::string text(TakeText(io_rest));
    DecodeText(text, checked);
    return text;
}

}  // namespace

EditorMessage ShowRequest(const DialogValues& in_values) {
    EditorMessage message;
    message.m_kind = EditorMessageKind::SHOW;
    message.m_values = in_values;
    return message;
}

SecretBytes::~SecretBytes() { WipeBytes(m_bytes.data(), m_bytes.size()); }

SecretBytes EncodeEditorMessage(const EditorMessage& in_message) {
    TextList list;
    CollectTexts(in_message, list);
    std::size_t payloadSize = 0;
    for (const std::string& text : list.m_texts) {
        payloadSize += NUMBER_SIZE + text.size();
    }
    if (payloadSize > MAX_EDITOR_PAYLOAD_SIZE) {
        throw EditorProtocolError("texts of more than 4 MiB");
    }
    SecretBytes bytes(EDITOR_HEADER_SIZE + payloadSize);
    Writer writer(bytes.Get());
    writer.Bytes(MAGIC);
    writer.Number(static_cast<std::uint32_t>(in_message.m_kind));
    writer.Number(payloadSize);
    for (const std::string& text : list.m_texts) {
        writer.Text(text);
    }
    return bytes;
}

std::size_t EditorPayloadSize(std::span<const char> in_header) {
    if (std::string_view(in_header.data(), MAGIC.size()) != MAGIC) {
        throw EditorProtocolError("bytes that are no message");
    }
    const std::size_t size = ReadNumber(in_header.subspan(MAGIC.size() + NUMBER_SIZE));
    if (size > MAX_EDITOR_PAYLOAD_SIZE) {
        throw EditorProtocolError("a message of more than 4 MiB");
    }
    return size;
}

EditorMessage DecodeEditorMessage(std::span<const char> in_header,
                                  std::span<const char> in_payload) {
    EditorMessage message;
    message.m_kind = static_cast<EditorMessageKind>(ReadNumber(in_header.subspan(MAGIC.size())));
    std::span<const char> rest = in_payload;
    if (HasValues(message.m_kind)) {
        for (const DialogField& field : DIALOG_FIELDS) {
            DecodeText(TakeText(rest), (message.m_values.*field.m_value).emplace());
        }
    } else if (message.m_kind == EditorMessageKind::UNAVAILABLE) {
        message.m_reason = TakeUtf8(rest);
    } else if (message.m_kind == EditorMessageKind::ASK) {
        message.m_question.m_text = TakeUtf8(rest);
        message.m_question.m_name = TakeUtf8(rest);
    } else if (message.m_kind != EditorMessageKind::CANCEL &&
               message.m_kind != EditorMessageKind::YES) {
        throw EditorProtocolError("a message of an unknown kind");
    }
    if (!rest.empty()) {
        throw EditorProtocolError("more bytes than its message has texts");
    }
    return message;
}

}  // namespace Veltrane::ODBC
