/// The log for errors. Implemented by the layer that owns a log.
#ifndef EXCEPTIONS_ILOGGER_H
#define EXCEPTIONS_ILOGGER_H

#include <cstdint>

#include "../tools/RequireCpp20.h"

namespace Orska::Support {

class ErrorException;

class ILogger {
public:
    /// Below this level errors are not logged.
    static constexpr std::int32_t ERROR_LEVEL = 2;

    virtual ~ILogger() = default;

    virtual std::int32_t GetLogLevel() = 0;

    /// @param in_namespace, in_class, in_function  the caller
    /// @param in_format  as for printf, in the encoding of byte texts (GetByteTextEncoding)
    virtual void LogError(const char* in_namespace, const char* in_class, const char* in_function,
                          const char* in_format, ...) __attribute__((format(printf, 5, 6))) = 0;

    virtual void LogErrorException(const char* in_namespace, const char* in_class,
                                   const char* in_function, const ErrorException& in_exception) = 0;
};

}  // namespace Orska::Support

#endif
