// Requests through the exported functions, narrow and wide, with an installer in memory and an
// editor that answers. Result 0 comes with exactly one error (a refused removal leaves it to the
// installer), and no request touches a data source of another name.
//
// Input: the entry point and the parent window, the request, what fails, then description,
// attribute list (semicolons stand for NULs, as in the installers' tools), and the editor's texts.
#include <algorithm>
#include <cstring>
#include <memory>

#include "PlatformAbstraction/strings/orska_wstring.h"
#include "fuzz/FuzzInput.h"
#include "tests/support/OdbcInstaller_Fake.h"
#include "tests/support/VeltraneDSNDialog_Fake.h"

extern "C" int ConfigDSN(void* in_parentWindow, unsigned short in_requestType,
                         const char* in_driverDescription, const char* in_attributes);
extern "C" int ConfigDSNW(void* in_parentWindow, unsigned short in_requestType,
                          const char16_t* in_driverDescription, const char16_t* in_attributes);

namespace {

using Orska::Fuzz::FuzzInput;
using Orska::Fuzz::Require;
using Orska::Support::orska_wstring;
using Veltrane::Test::FakeInstaller;
using Veltrane::Test::s_editor;
using Veltrane::Test::s_installer;

constexpr unsigned short REMOVE = 3;
constexpr unsigned short REMOVE_SYSTEM = 6;

struct RequestInput {
    bool m_hasWindow;
    unsigned short m_type;
    std::uint8_t m_failing;  ///< the number of the operation that fails; 0: none
    std::string m_description;
    std::string m_attributes;  ///< without the second NUL at the end
    std::u16string m_texts[7];
    int m_answer;
};

/// Text of exactly its size with two NULs behind it: one more byte and the sanitizer sees it.
template <class Text>
std::unique_ptr<typename Text::value_type[]> MakeList(const Text& in_text, std::size_t in_nuls) {
    std::unique_ptr<typename Text::value_type[]> list(
        new typename Text::value_type[in_text.size() + in_nuls]());
    std::copy(in_text.begin(), in_text.end(), list.get());
    return list;
}

void SetUp(const RequestInput& in_request) {
    s_installer = {};
    s_installer.m_profile["Other"] = {{"Driver", "o"}, {"Server", "so"}};
    s_installer.m_profile["known"] = {
        {"Driver", "path"}, {"Server", "s"}, {"UID", "u"}, {"PWD", "p"}, {"Extra", "e"}};
    s_installer.m_invalidNames = {"a[b"};
    std::uint8_t count = 0;
    const std::uint8_t failing = in_request.m_failing;
    s_installer.m_fails = [count, failing](const std::string&) mutable {
        return ++count == failing;
    };
    s_editor = {};
    s_editor.m_result = in_request.m_answer;
    const auto fill = [&in_request](Veltrane::ODBC::DialogValues& out_values) {
        const auto& texts = in_request.m_texts;
        out_values.m_dsn = texts[0];
        out_values.m_server = texts[1];
        out_values.m_cognosNamespace = texts[2];
        out_values.m_microStrategyLoginMode = texts[3];
        out_values.m_uid = texts[4];
        out_values.m_pwd = texts[5];
        out_values.m_database = texts[6];
    };
    fill(s_editor.m_initialValues);
    s_editor.m_edit = fill;
}

/// The names of all data sources that the request may have changed: those in its operations.
bool IsNamed(const std::string& in_name) {
    return std::any_of(s_installer.m_calls.begin(), s_installer.m_calls.end(),
                       [&](const std::string& in_call) {
                           return in_call.starts_with("Valid " + in_name) ||
                                  in_call.find("[" + in_name + "]") != std::string::npos;
                       });
}

void Check(const RequestInput& in_request, int in_result) {
    const std::size_t posted = s_installer.m_posted.size();
    const bool isRemoval = in_request.m_type == REMOVE || in_request.m_type == REMOVE_SYSTEM;
    Require(in_result == 0 || in_result == 1, "another result");
    const bool isInstallersOwn =
        isRemoval && posted == 0 && s_installer.m_calls.back().starts_with("RemoveDSN");
    Require(posted == (in_result == 0 && !isInstallersOwn ? 1U : 0U), "not one error a failure");
    if (posted == 1) {
        const auto& [code, text] = s_installer.m_posted[0];
        Require(code >= 1 && code <= 23 && !text.empty(), "another installer error", text);
    }
    if (in_result == 1 && !isRemoval) {
        Require(s_installer.m_calls.back() == "Commit", "success without a commit");
    }
    const FakeInstaller::Section other = {{"Driver", "o"}, {"Server", "so"}};
    Require(IsNamed("Other") || s_installer.m_profile["Other"] == other, "another section");
}

/// The same request through the other entry point must do the same.
void CompareEntries(const RequestInput& in_request, void* in_window) {
    SetUp(in_request);
    const auto description = MakeList(in_request.m_description, 1);
    const auto attributes = MakeList(in_request.m_attributes, 2);
    const int narrow = ConfigDSN(in_window, in_request.m_type, description.get(), attributes.get());
    Check(in_request, narrow);
    const FakeInstaller afterNarrow = s_installer;

    SetUp(in_request);
    const auto wideDescription = MakeList(orska_wstring(in_request.m_description).GetAsUtf16(), 1);
    const auto wideAttributes = MakeList(orska_wstring(in_request.m_attributes).GetAsUtf16(), 2);
    const int wide =
        ConfigDSNW(in_window, in_request.m_type, wideDescription.get(), wideAttributes.get());
    Check(in_request, wide);
    Require(narrow == wide && afterNarrow.m_calls == s_installer.m_calls &&
                afterNarrow.m_profile == s_installer.m_profile &&
                afterNarrow.m_posted == s_installer.m_posted,
            "narrow and wide differ");
}

std::string TakeAttributes(FuzzInput& io_input) {
    std::string attributes = io_input.TakePart();
    std::replace(attributes.begin(), attributes.end(), ';', '\0');
    // The list ends at the first empty entry.
    return attributes.substr(0, attributes.find(std::string(2, '\0')));
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* in_data, std::size_t in_size) {
    FuzzInput input(in_data, in_size);
    RequestInput request;
    const std::uint8_t flags = input.TakeByte();
    request.m_hasWindow = (flags & 1) != 0;
    request.m_answer = (flags & 2) != 0 ? 2 : 1;
    request.m_type = input.TakeByte() % 8;
    request.m_failing = input.TakeByte() % 32;
    const std::string description = input.TakePart();
    request.m_description = description.c_str();
    request.m_attributes = TakeAttributes(input);
    for (std::u16string& text : request.m_texts) {
        text = orska_wstring(input.TakePart()).GetAsUtf16();
    }
    int window = 0;
    CompareEntries(request, request.m_hasWindow ? &window : nullptr);
    return 0;
}
