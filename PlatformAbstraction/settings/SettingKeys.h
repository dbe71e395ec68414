/// The keys of the setting table. Keys are compared without regard to the case of ASCII letters.
#ifndef PLATFORMABSTRACTION_SETTINGKEYS_H
#define PLATFORMABSTRACTION_SETTINGKEYS_H

#include "../../tools/RequireCpp20.h"

namespace Orska::Support {

constexpr char SETTING_ANSI_ENCODING[] = "ANSIENCODING";
constexpr char SETTING_CONFIG_ERROR_MESSAGES_PATH[] = "CONFIGERRORMESSAGESPATH";
constexpr char SETTING_DRIVER_LOCALE[] = "DriverLocale";
constexpr char SETTING_DRIVER_MANAGER_ENCODING[] = "DRIVERMANAGERENCODING";
constexpr char SETTING_ENCRYPT_SWAP_FILE[] = "EncryptSwapFile";
constexpr char SETTING_ERROR_MESSAGES_PATH[] = "ERRORMESSAGESPATH";
constexpr char SETTING_LOG_FILE_COUNT[] = "LogFileCount";
constexpr char SETTING_LOG_FILE_SIZE[] = "LogFileSize";
constexpr char SETTING_LOG_LEVEL[] = "LogLevel";
constexpr char SETTING_LOG_NAMESPACE[] = "LogNamespace";
constexpr char SETTING_LOG_PATH[] = "LogPath";
constexpr char SETTING_LOG_TYPE[] = "LogType";
constexpr char SETTING_MEMORY_MANAGER_MEMORY_LIMIT[] = "MemoryManagerMemoryLimit";
constexpr char SETTING_MEMORY_MANAGER_STRATEGY[] = "MemoryManagerStrategy";
constexpr char SETTING_MEMORY_MANAGER_SWAP_DISK_LIMIT[] = "MemoryManagerSwapDiskLimit";
constexpr char SETTING_MEMORY_MANAGER_THRESHOLD_PERCENT[] = "MemoryManagerThresholdPercent";
constexpr char SETTING_ODBC_INST_LIB[] = "ODBCInstLib";
constexpr char SETTING_SERVICE_NAME[] = "ServiceName";
constexpr char SETTING_SWAP_FILE_PATH[] = "SWAPFILEPATH";
constexpr char SETTING_TRACE_TO_STD_ERR[] = "TRACETOSTDERR";
/// Known, but not read here.
constexpr char SETTING_UNICODE_DATA_PATH[] = "UNICODEDATAPATH";

/// The environment variable that overrides SETTING_ANSI_ENCODING.
constexpr char ENVIRONMENT_ANSI_ENCODING[] = "ORSKA_APP_ANSI_ENCODING";

}  // namespace Orska::Support

#endif
