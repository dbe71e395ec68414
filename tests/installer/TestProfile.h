/// The registry of the test installer: the data sources of a user and of the system and the
/// installed drivers, all below one scratch key, so that tests see neither each other's data
/// sources nor the machine's. A program that reads ODBC's own keys is tested on those: for it
/// VELTRANE_TEST_INSTALLER_KEY is "ODBC". Names and values are UTF-16.
#ifndef TESTS_INSTALLER_TESTPROFILE_H
#define TESTS_INSTALLER_TESTPROFILE_H

#include <map>
#include <optional>
#include <string>

namespace Veltrane::Test::TestProfile {

enum class Root { USER, SYSTEM, DRIVERS };

using Section = std::map<std::wstring, std::wstring>;
using Sections = std::map<std::wstring, Section>;

/// Creates a scratch key for this process, which the installer in it uses too.
void UseScratchKey();
/// Removes the scratch key with everything in it.
void RemoveScratchKey();

std::optional<std::wstring> Read(Root in_root, const std::wstring& in_section,
                                 const std::wstring& in_key);
/// @param in_value  null removes the key
bool Write(Root in_root, const std::wstring& in_section, const std::wstring& in_key,
           const wchar_t* in_value);
/// Removes all sections.
void Clear(Root in_root);
/// @return true also if there is no such section
bool RemoveSection(Root in_root, const std::wstring& in_section);
/// Every section with its values.
Sections List(Root in_root);

}  // namespace Veltrane::Test::TestProfile

#endif
