/// What host and editor program say to each other over their socket: the host sends `SHOW` with the
/// seven texts, the editor answers once, with `OK` and the seven texts, with `CANCEL`, or with
/// `UNAVAILABLE` and a reason when it cannot show anything (no display, an unknown terminal). Or
/// the host asks a question: `ASK`, and the editor answers `YES` or `CANCEL`.
///
/// A message is a header of 12 bytes - "VDE1", the kind, the length of the payload - and the
/// payload: for `SHOW` and `OK` the texts of the fields in the order of `DIALOG_FIELDS`, for
/// `UNAVAILABLE` one text, for `ASK` the question and what takes the place of its %s. A text is its
/// length in bytes and that many bytes of UTF-8. Numbers have 32 bits, least significant byte
/// first.
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
    std::string m_name;  ///< takes the place of the %s
};

struct EditorMessage {
    EditorMessageKind m_kind = EditorMessageKind::CANCEL;
    /// For `SHOW` and `OK`; never null.
    DialogValues m_values;
    /// For `UNAVAILABLE`, in UTF-8.
    std::string m_reason;
    EditorQuestion m_question;  ///< for `ASK`
    /// For `SHOW`, not sent: the editor has it in its environment.
    std::string m_testedDriver;
};

EditorMessage ShowRequest(const DialogValues& in_values);

constexpr std::size_t EDITOR_HEADER_SIZE = 12;

/// A file of initial values has at most 1 MiB; a longer message than this is an error on both
/// sides.
constexpr std::size_t MAX_EDITOR_PAYLOAD_SIZE = std::size_t{4} << 20;

/// What goes over the socket is not a message of this protocol.
class EditorProtocolError : public std::runtime_error {
public:
    using std::runtime_error::runtime_error;
};

/// Bytes that may hold a password: one buffer, made at its full size and cleared at its end.
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

/// @throws EditorProtocolError when the texts are longer than a message may be
SecretBytes EncodeEditorMessage(const EditorMessage& in_message);

/// @param in_header  `EDITOR_HEADER_SIZE` bytes
/// @return how many bytes of payload follow
/// @throws EditorProtocolError
std::size_t EditorPayloadSize(std::span<const char> in_header);

/// @param in_payload  as many bytes as `EditorPayloadSize` says
/// @throws EditorProtocolError; its text holds nothing of the payload
EditorMessage DecodeEditorMessage(std::span<const char> in_header,
                                  std::span<const char> in_payload);

}  // namespace Veltrane::ODBC

#endif
