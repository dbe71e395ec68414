/// The exceptions of the support library.
///
/// An exception has a message key, a component id and parameters. The catcher's message source
/// makes the text later. No class here derives from std::exception. One thread at a time can use an
/// exception object: making the message writes to it.
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

/// The component id of the support library's own exceptions.
constexpr std::uint32_t SUPPORT_ERROR = 3;

/// Unknown row and column numbers.
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
    /// With a finished text instead of a key; the component id is 0.
    ErrorException(const SQLState& in_customState, const orska_wstring& in_messageText,
                   std::int32_t in_nativeErrorCode, std::uint64_t in_rowNumber = UNKNOWN_ROW,
                   std::uint32_t in_columnNumber = UNKNOWN_COLUMN);
    /// With a finished text instead of a key; the component id is 0.
    ErrorException(DiagState in_diagState, const orska_wstring& in_messageText,
                   std::int32_t in_nativeErrorCode, std::uint64_t in_rowNumber = UNKNOWN_ROW,
                   std::uint32_t in_columnNumber = UNKNOWN_COLUMN);
    ErrorException(const ErrorException&) = default;
    ErrorException(ErrorException&&) = default;
    ErrorException& operator=(const ErrorException&) = default;
    ErrorException& operator=(ErrorException&&) = default;
    virtual ~ErrorException();

    /// Call it in a catch block. Returns a copy of the current exception if it is an
    /// ErrorException, else a general error whose key is the description of the current exception.
    /// A message source that does not know that key answers code -1, so the text is still shown.
    static ErrorException FromCurrentException(std::uint32_t in_componentId);

    /// Call it in a catch block. Returns one line that describes the current exception, made by the
    /// message source if there is one.
    static orska_wstring DescribeCurrentException(IMessageSource* in_messageSource = nullptr,
                                                  const orska_wstring& in_locale = {});

    /// Call it in a catch block. Writes the current exception to the log and to the trace, unless
    /// the log's level is below ILogger::ERROR_LEVEL. Throws nothing; a null logger logs nothing.
    /// @param in_namespace, in_class, in_function  the caller, passed to the logger unchanged
    static void LogCurrentException(ILogger* in_logger, const char* in_namespace,
                                    const char* in_class, const char* in_function) noexcept;

    /// Returns the message text, made by the first call with a source and then kept. Without a
    /// source it is a fixed text, and a later call with a source still makes the message.
    /// @param in_messageSource  not owned; can be null
    orska_wstring GetMessageText(IMessageSource* in_messageSource, const orska_wstring& in_locale);
    /// As above; releases the reference before it returns or throws.
    orska_wstring GetMessageText(SharedPtr<IMessageSource> in_messageSource,
                                 const orska_wstring& in_locale);

    /// Returns the native error code of the message, made as for GetMessageText; -1 if there is no
    /// source or the source has no message.
    std::int32_t GetNativeErrorCode(IMessageSource* in_messageSource,
                                    const orska_wstring& in_locale);
    /// As above; releases the reference before it returns or throws.
    std::int32_t GetNativeErrorCode(SharedPtr<IMessageSource> in_messageSource,
                                    const orska_wstring& in_locale);

    /// Returns one line for the trace and the log, not for users: the finished text, or the key
    /// with all its data.
    orska_wstring GetUnformattedDescription() const;

    /// Returns the key before the message has been made, then the text.
    orska_wstring GetMessageKeyOrText() const { return m_messageKeyOrText; }
    const orska_wstring& GetMessageKeyOrTextRef() const noexcept { return m_messageKeyOrText; }
    const std::vector<orska_wstring>& GetMessageParameters() const noexcept {
        return m_messageParameters;
    }
    DiagState GetDiagState() const noexcept { return m_diagState; }
    /// Not set if GetDiagState has the state.
    const SQLState& GetCustomState() const noexcept { return m_customState; }
    std::uint32_t GetComponentId() const noexcept { return m_componentId; }
    std::uint64_t GetRowNumber() const noexcept { return m_rowNumber; }
    std::uint32_t GetColumnNumber() const noexcept { return m_columnNumber; }

private:
    void MakeMessage(IMessageSource* in_messageSource, const orska_wstring& in_locale);
    /// Returns the key, even after the text for a missing source has replaced it.
    const orska_wstring& GetKey() const noexcept;

    DiagState m_diagState = DIAG_GENERAL_ERROR;
    SQLState m_customState;
    std::uint32_t m_componentId = 0;
    std::int32_t m_nativeErrorCode = 0;
    orska_wstring m_messageKeyOrText;
    std::vector<orska_wstring> m_messageParameters;
    std::uint64_t m_rowNumber = UNKNOWN_ROW;
    std::uint32_t m_columnNumber = UNKNOWN_COLUMN;
    bool m_hasParameters = false;                ///< true also for an empty parameter list
    bool m_isFormatted = false;                  ///< m_messageKeyOrText is the finished text
    std::optional<orska_wstring> m_replacedKey;  ///< the key that a text has replaced
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

/// Thrown for a setting that prevents start-up. Its key is an English text.
class StartupInitException : public ProductException {
public:
    /// @param in_text  in ASCII, whatever the process ANSI encoding is
    explicit StartupInitException(const char* in_text);
};

/// Thrown when a conversion between text and numbers fails.
class NumberConversionException : public ProductException {
public:
    using ProductException::ProductException;
};

/// The text is not a number.
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
