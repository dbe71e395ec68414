/// The protocol between host and editor program. The host sends `SHOW` with the seven texts. The
/// editor answers once: with `OK` and the seven texts, with `CANCEL`, or with `UNAVAILABLE` and a
/// reason (no display, an unknown terminal). Or the host sends `ASK` with a question, and the
/// editor answers `YES`, `CANCEL` or `UNAVAILABLE`.
///
/// A message is a header of 12 bytes ("VDE1", the kind, the length of the payload) and the payload:
/// for `SHOW` and `OK` the texts of the fields in the order of `DIALOG_FIELDS`, for `UNAVAILABLE`
/// one text, for `ASK` the question and the text that replaces its %s. A text is its length in
/// bytes, followed by its UTF-8 bytes. Numbers are 32-bit little-endian.
#ifndef VELTRANEDIALOG_EDITORPROTOCOL_H
#define VELTRANEDIALOG_EDITORPROTOCOL_H

#include <cstdint>
#include <span>
#include <stdexcept>
#include <string>
#include <vector>

#include "VeltraneDialog/InitialValues.h"

namespace Veltrane::ODBC {

enum class EditorMessageKind : std::uint32_t {
    SHOW = 1,
    OK = 2,
    CANCEL = 3,
    UNAVAILABLE = 4,
    ASK = 5,
    YES = 6
};

/// A question that is answered with yes or no, in UTF-8.
struct EditorQuestion {
    std::string m_text;  ///< English, a key of the translations; has one %s
    std::string m_name;  ///< replaces the %s
};

struct EditorMessage {
    EditorMessageKind m_kind = EditorMessageKind::CANCEL;
    /// For `SHOW` and `OK`; never null.
    DialogValues m_values;
    /// For `UNAVAILABLE`, in UTF-8.
    std::string m_reason;
    EditorQuestion m_question;  ///< for `ASK`
    /// For `SHOW`. Not sent: the editor gets it in its environment.
    std::string m_testedDriver;
};

EditorMessage ShowRequest(const DialogValues& in_values);

constexpr std::size_t EDITOR_HEADER_SIZE = 12;

/// A larger payload is an error on both sides. A file of initial values has at most 1 MiB.
constexpr std::size_t MAX_EDITOR_PAYLOAD_SIZE = std::size_t{4} << 20;

/// Thrown for bytes that are not a message of this protocol.
class EditorProtocolError : public std::runtime_error {
public:
    using std::runtime_error::runtime_error;
};

/// Bytes that can hold a password: one buffer, allocated at its full size and cleared at the end.
class SecretBytes {
public:
    explicit SecretBytes(std::size_t in_size = 0) : m_bytes(in_size) {}
    SecretBytes(SecretBytes&&) = default;
    SecretBytes& operator=(SecretBytes&&) = delete;
    ~SecretBytes();
    std::span<char> Get() { return m_bytes; }
    std::span<const char> Get() const { return m_bytes; }

private:
    std::vector<char> m_bytes;
};

/// @throws EditorProtocolError when the texts are too long for a message
SecretBytes EncodeEditorMessage(const EditorMessage& in_message);

/// @param in_header  `EDITOR_HEADER_SIZE` bytes
/// @return the size of the payload that follows, in bytes
/// @throws EditorProtocolError
std::size_t EditorPayloadSize(std::span<const char> in_header);

/// @param in_payload  as many bytes as `EditorPayloadSize` returned
/// @throws EditorProtocolError; its text contains nothing of the payload
EditorMessage DecodeEditorMessage(std::span<const char> in_header,
                                  std::span<const char> in_payload);

}  // namespace Veltrane::ODBC

#endif
