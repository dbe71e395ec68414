#include "Exceptions/ErrorException.h"

#include <cstring>
#include <exception>
#include <string>

#include "Exceptions/ILogger.h"
#include "Exceptions/OrskaThrow.h"
#include "PlatformAbstraction/strings/ProcessEncodings.h"
#include "tools/NoCancellation.h"

namespace Orska::Support {

namespace {

constexpr TraceSite LOG_SITE = {"Orska::Support::ErrorException::LogCurrentException",
                                "Exceptions\\ErrorException", 0};

// Does not use the process ANSI encoding, which may not be an ASCII superset.
orska_wstring Decimal(std::uint64_t in_value) {
    return orska_wstring().SetFromUtf8(std::to_string(in_value));
}

orska_wstring DecimalOrUnknown(bool in_isKnown, std::uint64_t in_value) {
    return in_isKnown ? Decimal(in_value) : orska_wstring(u"UNKNOWN");
}

orska_wstring Quoted(const orska_wstring& in_text) {
    orska_wstring escaped = in_text;
    escaped.FindAndReplace(u"\"", u"\\\"");
    return u"\"" + escaped + u"\"";
}

/// Returns " MessageParameters=" and the bracketed list.
orska_wstring ParameterList(const std::vector<orska_wstring>& in_parameters) {
    orska_wstring list = u" MessageParameters=[";
    for (std::size_t index = 0; index < in_parameters.size(); ++index) {
        if (index != 0) {
            list += u", ";
        }
        list += Quoted(in_parameters[index]);
    }
    list += u"]";
    return list;
}

void LogErrorExceptionTo(ILogger& in_logger, const char* in_namespace, const char* in_class,
                         const char* in_function, const ErrorException& in_exception) {
    if (IsTraceOn(1)) {
        const orska_wstring line = u"Exception: " + in_exception.GetUnformattedDescription();
        TraceLine(1, LOG_SITE, line.GetAsUtf8().c_str());
    }
    if (in_logger.GetLogLevel() >= ILogger::ERROR_LEVEL) {
        in_logger.LogErrorException(in_namespace, in_class, in_function, in_exception);
    }
}

void LogOtherExceptionTo(ILogger& in_logger, const char* in_namespace, const char* in_class,
                         const char* in_function) {
    const orska_wstring description = ErrorException::DescribeCurrentException();
    if (IsTraceOn(1)) {
        TraceLine(1, LOG_SITE, description.GetAsUtf8().c_str());
    }
    if (in_logger.GetLogLevel() >= ILogger::ERROR_LEVEL) {
        in_logger.LogError(in_namespace, in_class, in_function, "%s",
                           description.GetAsAnsiString(GetByteTextEncoding()).c_str());
    }
}

}  // namespace

ErrorException::ErrorException(const SQLState& in_customState, std::uint32_t in_componentId,
                               const orska_wstring& in_messageKey,
                               const std::vector<orska_wstring>& in_messageParameters,
                               std::uint64_t in_rowNumber, std::uint32_t in_columnNumber)
    : m_customState(in_customState),
      m_componentId(in_componentId),
      m_messageKeyOrText(in_messageKey),
      m_messageParameters(in_messageParameters),
      m_rowNumber(in_rowNumber),
      m_columnNumber(in_columnNumber),
      m_hasParameters(true) {}

ErrorException::ErrorException(const SQLState& in_customState, std::uint32_t in_componentId,
                               const orska_wstring& in_messageKey, std::uint64_t in_rowNumber,
                               std::uint32_t in_columnNumber)
    : m_customState(in_customState),
      m_componentId(in_componentId),
      m_messageKeyOrText(in_messageKey),
      m_rowNumber(in_rowNumber),
      m_columnNumber(in_columnNumber) {}

ErrorException::ErrorException(DiagState in_diagState, std::uint32_t in_componentId,
                               const orska_wstring& in_messageKey,
                               const std::vector<orska_wstring>& in_messageParameters,
                               std::uint64_t in_rowNumber, std::uint32_t in_columnNumber)
    : ErrorException(SQLState(), in_componentId, in_messageKey, in_messageParameters, in_rowNumber,
                     in_columnNumber) {
    m_diagState = in_diagState;
}

ErrorException::ErrorException(DiagState in_diagState, std::uint32_t in_componentId,
                               const orska_wstring& in_messageKey, std::uint64_t in_rowNumber,
                               std::uint32_t in_columnNumber)
    : ErrorException(SQLState(), in_componentId, in_messageKey, in_rowNumber, in_columnNumber) {
    m_diagState = in_diagState;
}

ErrorException::ErrorException(const SQLState& in_customState, const orska_wstring& in_messageText,
                               std::int32_t in_nativeErrorCode, std::uint64_t in_rowNumber,
                               std::uint32_t in_columnNumber)
    : m_customState(in_customState),
      m_nativeErrorCode(in_nativeErrorCode),
      m_messageKeyOrText(in_messageText),
      m_rowNumber(in_rowNumber),
      m_columnNumber(in_columnNumber),
      m_isFormatted(true) {}

ErrorException::ErrorException(DiagState in_diagState, const orska_wstring& in_messageText,
                               std::int32_t in_nativeErrorCode, std::uint64_t in_rowNumber,
                               std::uint32_t in_columnNumber)
    : ErrorException(SQLState(), in_messageText, in_nativeErrorCode, in_rowNumber,
                     in_columnNumber) {
    m_diagState = in_diagState;
}

ErrorException::~ErrorException() = default;

ErrorException ErrorException::FromCurrentException(std::uint32_t in_componentId) {
    try {
        throw;
    } catch (const ErrorException& exception) {
        return exception;
    } catch (...) {
        return ErrorException(DIAG_GENERAL_ERROR, in_componentId, DescribeCurrentException());
    }
}

orska_wstring ErrorException::DescribeCurrentException(IMessageSource* in_messageSource,
                                                       const orska_wstring& in_locale) {
    try {
        throw;
    } catch (ErrorException& exception) {
        return in_messageSource != nullptr ? exception.GetMessageText(in_messageSource, in_locale)
                                           : exception.GetUnformattedDescription();
    } catch (const std::exception& exception) {
        // Our texts are in UTF-8, those of the standard library in ASCII.
        return orska_wstring().SetFromUtf8(exception.what(), orska_wstring::NUL_TERMINATED);
    } catch (const std::string& text) {
        return orska_wstring(text.data(), text.size(), GetByteTextEncoding());
    } catch (const std::wstring& text) {
        return text;
    } catch (const orska_wstring& text) {
        return text;
    } catch (const char* text) {
        const std::size_t length = text == nullptr ? 0 : std::strlen(text);
        return orska_wstring(text, length, GetByteTextEncoding());
    } catch (const wchar_t* text) {
        return text;
    } catch (...) {
        return u"Unknown exception.";
    }
}

void ErrorException::LogCurrentException(ILogger* in_logger, const char* in_namespace,
                                         const char* in_class, const char* in_function) noexcept {
    // A log that fails must not replace the exception that is being handled.
    const NoCancellation noCancellation;
    try {
        if (in_logger == nullptr || in_logger->GetLogLevel() < ILogger::ERROR_LEVEL) {
            return;
        }
        try {
            throw;
        } catch (const ErrorException& exception) {
            LogErrorExceptionTo(*in_logger, in_namespace, in_class, in_function, exception);
        } catch (...) {
            LogOtherExceptionTo(*in_logger, in_namespace, in_class, in_function);
        }
    } catch (...) {
    }
}

void ErrorException::MakeMessage(IMessageSource* in_messageSource, const orska_wstring& in_locale) {
    if (m_isFormatted) {
        return;
    }
    if (in_messageSource == nullptr) {
        m_replacedKey = orska_wstring(GetKey());
        m_messageKeyOrText = u"Cannot create a message with a NULL message source";
        m_nativeErrorCode = -1;
        return;
    }
    orska_wstring text;
    std::int32_t nativeErrorCode = 0;
    if (m_hasParameters) {
        in_messageSource->GetMessageWithParameters(in_locale, GetKey(), m_componentId,
                                                   m_messageParameters, text, nativeErrorCode);
        if (nativeErrorCode == -1) {
            text += ParameterList(m_messageParameters);
        }
    } else {
        in_messageSource->GetMessage(in_locale, GetKey(), m_componentId, text, nativeErrorCode);
    }
    m_messageKeyOrText = std::move(text);
    m_nativeErrorCode = nativeErrorCode;
    m_isFormatted = true;
}

const orska_wstring& ErrorException::GetKey() const noexcept {
    return m_replacedKey ? *m_replacedKey : m_messageKeyOrText;
}

orska_wstring ErrorException::GetMessageText(IMessageSource* in_messageSource,
                                             const orska_wstring& in_locale) {
    MakeMessage(in_messageSource, in_locale);
    return m_messageKeyOrText;
}

orska_wstring ErrorException::GetMessageText(SharedPtr<IMessageSource> in_messageSource,
                                             const orska_wstring& in_locale) {
    // A parameter can live until the end of the caller's expression; a local does not.
    const SharedPtr<IMessageSource> source = std::move(in_messageSource);
    return GetMessageText(source.Get(), in_locale);
}

std::int32_t ErrorException::GetNativeErrorCode(IMessageSource* in_messageSource,
                                                const orska_wstring& in_locale) {
    MakeMessage(in_messageSource, in_locale);
    return m_nativeErrorCode;
}

std::int32_t ErrorException::GetNativeErrorCode(SharedPtr<IMessageSource> in_messageSource,
                                                const orska_wstring& in_locale) {
    const SharedPtr<IMessageSource> source = std::move(in_messageSource);
    return GetNativeErrorCode(source.Get(), in_locale);
}

orska_wstring ErrorException::GetUnformattedDescription() const {
    if (m_isFormatted) {
        return m_messageKeyOrText;
    }
    orska_wstring line = u"Unformatted ErrorException: {MessageKey=";
    line += Quoted(GetKey());
    line += u" ComponentID=";
    line += Decimal(m_componentId);
    // The apostrophe is part of the format that log readers know.
    line += u"' RowNumber=";
    line += DecimalOrUnknown(m_rowNumber != UNKNOWN_ROW, m_rowNumber);
    line += u" ColumnNumber=";
    line += DecimalOrUnknown(m_columnNumber != UNKNOWN_COLUMN, m_columnNumber);
    if (m_customState.IsSet()) {
        line += u" CustomState=";
        line += Quoted(orska_wstring().SetFromUtf8(m_customState.GetText()));
    } else {
        line += u" DiagState=";
        line += Decimal(static_cast<std::uint32_t>(m_diagState));
    }
    if (m_hasParameters) {
        line += ParameterList(m_messageParameters);
    }
    line += u"}";
    return line;
}

StartupInitException::StartupInitException(const char* in_text)
    : ProductException(orska_wstring().SetFromUtf8(in_text, orska_wstring::NUL_TERMINATED)) {}

}  // namespace Orska::Support
