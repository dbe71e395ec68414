// Settings from damaged hive files: each read returns the same values, without those that cannot be
// read. A change that writes the same bytes loses no value.
//
// Input: changes to a good hive, each two bytes of position and one of value. The checksum of the
// base block is corrected after them, unless the first byte of the input says otherwise.
#include <gtest/gtest.h>

#include <cstring>

#include "Exceptions/ErrorException.h"
#include "PlatformAbstraction/settings/RegistryConfigurationReader.h"
#include "fuzz/FuzzInput.h"
#include "tests/support/HiveFile.h"
#include "tests/support/SettingText.h"
#include "tests/support/TemporaryDirectory.h"

namespace {

using namespace Orska::Support;
using Orska::Fuzz::FuzzInput;
using Orska::Fuzz::Require;
using Orska::Test::HiveText;

constexpr std::size_t CHECKSUM = 0x1FC;

/// The values of the good hive, read as a map and as a section, where the values of the driver's
/// own lines count too; without a section and with one.
const std::string FOUND[] = {
    "[]LARGE::4294967303;LONG=" + std::string(600, 'l') +
        ";NUMBER:2147549191;TEXT=a \u20AC;[SECOND]N:16843009;[\u00DCBER]K\u00C9Y=sub;/=default;"
        "DRIVER=x;LARGE::4294967303;LONG=" +
        std::string(600, 'l') + ";NUMBER:2147549191;TEXT=a \u20AC;",
    "[SECOND]N:16843009;/N:16843009;"};

std::string MakeHive() {
    const Orska::Test::TemporaryDirectory directory;
    Orska::Test::WriteHive(
        directory.GetPath("hive"),
        {{"SOFTWARE\\Veltrane\\Driver",
          {{"Text", 1, HiveText(u"a \u20AC")},
           {"Number", 4, std::string("\x07\0\x01\x80", 4)},
           {"Large", 11, std::string("\x07\0\0\0\x01\0\0\0", 8)},
           {"DRIVER", 1, HiveText(u"x")},
           {"", 1, HiveText(u"default")},
           {"Long", 1, HiveText(std::u16string(600, u'l'))},
           {"Other", 3, "bytes"}}},
         {"SOFTWARE\\Veltrane\\Driver\\\u00DCber", {{"k\u00E9y", 1, HiveText(u"sub")}}},
         {"SOFTWARE\\Veltrane\\Driver\\Second", {{"n", 4, std::string(4, '\1')}}}});
    return directory.Read("hive");
}

void SetChecksum(std::string& io_hive) {
    std::uint32_t sum = 0;
    for (std::size_t at = 0; at < CHECKSUM; at += 4) {
        std::uint32_t number = 0;
        std::memcpy(&number, io_hive.data() + at, 4);
        sum ^= number;
    }
    std::memcpy(io_hive.data() + CHECKSUM, &sum, 4);
}

std::string Load(const orska_wstring* in_section) {
    const RegistryConfigurationReader reader(false);
    ConfigurationMap configuration;
    try {
        reader.LoadConfiguration(configuration, "HKEY_CURRENT_USER", "SOFTWARE\\Veltrane\\Driver",
                                 in_section);
        SectionMap section;
        reader.LoadConfiguration(section, "HKEY_CURRENT_USER", "SOFTWARE\\Veltrane\\Driver",
                                 in_section, true);
        return Orska::Test::ToText(configuration) + "/" + Orska::Test::ToText(section);
    } catch (const ProductException& error) {
        Require(error.GetMessageKeyOrText() == orska_wstring("RegKeyNotFound"), "wrong key",
                error.GetMessageKeyOrText().GetAsUtf8());
        return "refused";
    }
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* in_data, std::size_t in_size) {
    static const std::string s_good = MakeHive();
    static const Orska::Test::TemporaryDirectory s_directory;
    setenv("VELTRANE_USER_HIVE", s_directory.GetPath("hive").c_str(), 1);
    FuzzInput input(in_data, in_size);
    const bool isSumWrong = input.TakeByte() == 0xFF;
    std::string hive = s_good;
    while (!input.IsEmpty()) {
        const std::size_t at = input.TakeNumber(2) % hive.size();
        hive[at] = static_cast<char>(input.TakeByte());
    }
    if (!isSumWrong) SetChecksum(hive);
    s_directory.Write("hive", hive);
    const orska_wstring second("SECOND");
    for (const orska_wstring* section : {static_cast<const orska_wstring*>(nullptr), &second}) {
        const std::string text = Load(section);
        Require(Load(section) == text, "a different reading of the same hive", text);
        if (hive == s_good) {
            Require(text == FOUND[section == nullptr ? 0 : 1], "the good hive reads as", text);
        }
    }
    return 0;
}
