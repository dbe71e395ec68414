/// The failures of the support library.
///
/// An exception carries a message key, a component id and parameters; its text is made late, by the
/// message source that the catcher hands in. None of these classes derives from std::exception. An
/// exception object is used by one thread at a time: making the message writes to it.
#ifndef EXCEPTIONS_ERROREXCEPTION_H
#define EXCEPTIONS_ERROREXCEPTION_H

#include <cstdint>
#include <optional>
#include <vector>

#include "../PlatformAbstraction/base/ThreadSafeSharedObject.h"
#include "../PlatformAbstraction/strings/orska_wstring.h"
#include "DiagState.h"
#include "IMessageSource.h"
#include "SQLState.h"

namespace Orska::Support {

class ILogger;

/// The component of every exception that the support library raises itself.
constexpr std::uint32_t SUPPORT_ERROR = 3;

/// Row and column numbers with these values mean: unknown.
constexpr std::uint64_t UNKNOWN_ROW = ~std::uint64_t{0};
constexpr std::uint32_t UNKNOWN_COLUMN = ~std::uint32_t{0};

class ErrorException {
public:
    ErrorException(const SQLState& in_customState, std::uint32_t in_componentId,
                   const orska_wstring& in_messageKey,
                   const std::vector<orska_wstring>& in_messageParameters,
                   std::uint64_t in_rowNumber = UNKNOWN_ROW,
                   std::uint32_t in_columnNumber = UNKNOWN_COLUMN);
    ErrorException(const SQLState& in_customState, std::uint32_t in_componentId,
                   const orska_wstring& in_messageKey, std::uint64_t in_rowNumber = UNKNOWN_ROW,
                   std::uint32_t in_columnNumber = UNKNOWN_COLUMN);
    ErrorException(DiagState in_diagState, std::uint32_t in_componentId,
                   const orska_wstring& in_messageKey,
                   const std::vector<orska_wstring>& in_messageParameters,
                   std::uint64_t in_rowNumber = UNKNOWN_ROW,
                   std::uint32_t in_columnNumber = UNKNOWN_COLUMN);
    ErrorException(DiagState in_diagState, std::uint32_t in_componentId,
                   const orska_wstring& in_messageKey, std::uint64_t in_rowNumber = UNKNOWN_ROW,
                   std::uint32_t in_columnNumber = UNKNOWN_COLUMN);
    /// With a finished text in place of a key; the component id is 0.
    ErrorException(const SQLState& in_customState, const orska_wstring& in_messageText,
                   std::int32_t in_nativeErrorCode, std::uint64_t in_rowNumber = UNKNOWN_ROW,
                   std::uint32_t in_columnNumber = UNKNOWN_COLUMN);
    /// With a finished text in place of a key; the component id is 0.
    ErrorException(DiagState in_diagState, const orska_wstring& in_messageText,
                   std::int32_t in_nativeErrorCode, std::uint64_t in_rowNumber = UNKNOWN_ROW,
                   std::uint32_t in_columnNumber = UNKNOWN_COLUMN);
    ErrorException(const ErrorException&) = default;
    ErrorException(ErrorException&&) = default;
    ErrorException& operator=(const ErrorException&) = default;
    ErrorException& operator=(ErrorException&&) = default;
    virtual ~ErrorException();

    /// Called inside a catch block: a copy of the current exception if it is an ErrorException,
    /// else a general error whose key is the description of the current exception. A message source
    /// that does not know that description as a key answers code -1, so the text is still seen.
    static ErrorException FromCurrentException(std::uint32_t in_componentId);

    /// Called inside a catch block: one line that says what the current exception is, as the
    /// message source tells it if there is one.
    static orska_wstring DescribeCurrentException(IMessageSource* in_messageSource = nullptr,
                                                  const orska_wstring& in_locale = {});

    /// Called inside a catch block: reports the current exception to the log, unless the log's
    /// level is below ILogger::ERROR_LEVEL, and to the trace. Nothing leaves it; a null logger logs
    /// nothing.
    /// @param in_namespace, in_class, in_function  who logs, handed to the logger unchanged
    static void LogCurrentException(ILogger* in_logger, const char* in_namespace,
                                    const char* in_class, const char* in_function) noexcept;

    /// The message text, made on the first call with a source and kept from then on. Without a
    /// source it is a fixed text, and a later call with a source still makes the message.
    /// @param in_messageSource  not owned; may be null
    orska_wstring GetMessageText(IMessageSource* in_messageSource, const orska_wstring& in_locale);
    /// As above; gives the reference back before it returns or throws.
    orska_wstring GetMessageText(SharedPtr<IMessageSource> in_messageSource,
                                 const orska_wstring& in_locale);

    /// The native error code that comes with the message text, made as for GetMessageText; -1 when
    /// there is no source or the source has no message.
    std::int32_t GetNativeErrorCode(IMessageSource* in_messageSource,
                                    const orska_wstring& in_locale);
    /// As above; gives the reference back before it returns or throws.
    std::int32_t GetNativeErrorCode(SharedPtr<IMessageSource> in_messageSource,
                                    const orska_wstring& in_locale);

    /// One line for the trace and the log, never shown to users: the finished text, or the key and
    /// all that comes with it.
    orska_wstring GetUnformattedDescription() const;

    /// The key before the message has been made, the text afterwards.
    orska_wstring GetMessageKeyOrText() const { return m_messageKeyOrText; }
    const orska_wstring& GetMessageKeyOrTextRef() const noexcept { return m_messageKeyOrText; }
    const std::vector<orska_wstring>& GetMessageParameters() const noexcept {
        return m_messageParameters;
    }
    DiagState GetDiagState() const noexcept { return m_diagState; }
    /// Not set when the state is the one that GetDiagState names.
    const SQLState& GetCustomState() const noexcept { return m_customState; }
    std::uint32_t GetComponentId() const noexcept { return m_componentId; }
    std::uint64_t GetRowNumber() const noexcept { return m_rowNumber; }
    std::uint32_t GetColumnNumber() const noexcept { return m_columnNumber; }

private:
    void MakeMessage(IMessageSource* in_messageSource, const orska_wstring& in_locale);
    /// The key, also after a missing source has put its text in the key's place.
    const orska_wstring& GetKey() const noexcept;

    DiagState m_diagState = DIAG_GENERAL_ERROR;
    SQLState m_customState;
    std::uint32_t m_componentId = 0;
    std::int32_t m_nativeErrorCode = 0;
    orska_wstring m_messageKeyOrText;
    std::vector<orska_wstring> m_messageParameters;
    std::uint64_t m_rowNumber = UNKNOWN_ROW;
    std::uint32_t m_columnNumber = UNKNOWN_COLUMN;
    bool m_hasParameters = false;  ///< also true for an empty parameter list that was given
    bool m_isFormatted = false;    ///< m_messageKeyOrText holds finished text
    std::optional<orska_wstring> m_replacedKey;  ///< the key that a missing source displaced
};

/// A general error of the support library.
class ProductException : public ErrorException {
public:
    explicit ProductException(const orska_wstring& in_messageKey)
        : ErrorException(DIAG_GENERAL_ERROR, SUPPORT_ERROR, in_messageKey) {}
    ProductException(const orska_wstring& in_messageKey,
                     const std::vector<orska_wstring>& in_messageParameters)
        : ErrorException(DIAG_GENERAL_ERROR, SUPPORT_ERROR, in_messageKey, in_messageParameters) {}
};

/// A setting that makes start-up impossible. Its key is an English text.
class StartupInitException : public ProductException {
public:
    /// @param in_text  in ASCII, whatever the process ANSI encoding is
    explicit StartupInitException(const char* in_text);
};

/// A conversion between text and numbers that failed.
class NumberConversionException : public ProductException {
public:
    using ProductException::ProductException;
};

/// The text is no number.
class NumberConversionInvalidDataException : public NumberConversionException {
public:
    using NumberConversionException::NumberConversionException;
};

/// The number does not fit.
class NumberConversionOutOfRangeException : public NumberConversionException {
public:
    using NumberConversionException::NumberConversionException;
};

}  // namespace Orska::Support

#endif
