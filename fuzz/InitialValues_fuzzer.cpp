// The file of initial values. Values that were read can be written and read back the same. A
// refusal names a line of the file but none of its text.
#include <algorithm>
#include <stdexcept>

#include "VeltraneDialog/FieldRules.h"
#include "VeltraneDialog/InitialValues.h"
#include "VeltraneDialog/Utf8.h"
#include "fuzz/FuzzInput.h"

namespace {

using namespace Veltrane::ODBC;
using Orska::Fuzz::Require;

const std::string FILE_NAME = "f";

void CheckRefusal(const std::string& in_contents, const std::string& in_text) {
    constexpr std::string_view BEGINNING("Initial values of a DSN: f, line ");
    constexpr std::string_view REASONS[] = {
        ": a section header without its closing bracket.",
        ": neither a section, a comment nor a key with its value.",
        ": an unknown key; known are DSN, Server, Namespace, LoginMode, UID, PWD and Database.",
        ": a value that is not UTF-8 text.",
        "Line ends, tabs and other control characters cannot be stored.",
        "Blanks at the beginning or the end cannot be stored.",
        "Too long: a value has at most 259 characters."};
    Require(in_text.starts_with(BEGINNING), "wrong error text", in_text);
    std::size_t digits = 0;
    const long line = std::stol(in_text.substr(BEGINNING.size()), &digits);
    Require(line >= 1 && line <= std::count(in_contents.begin(), in_contents.end(), '\n') + 1,
            "a line that is not in the file", in_text);
    std::string reason = in_text.substr(BEGINNING.size() + digits);
    for (const DialogField& field : DIALOG_FIELDS) {
        const std::string prefix = ": " + std::string(field.m_key) + ": ";
        if (reason.starts_with(prefix)) reason.erase(0, prefix.size());
    }
    Require(std::find(std::begin(REASONS), std::end(REASONS), reason) != std::end(REASONS),
            "wrong reason", in_text);
}

/// Written around each value, and read as part of it.
constexpr char BEFORE[] = "'=\"";
constexpr char BEHIND[] = ";#= \\'";

std::string Write(const DialogValues& in_values) {
    std::string text = "[DSN]\n";
    for (const DialogField& field : DIALOG_FIELDS) {
        const DialogString& value = in_values.*field.m_value;
        Require(value.has_value(), "a value that is null");
        text += std::string(field.m_key) + "=" + BEFORE + EncodeUtf8(*value) + BEHIND + "\n";
    }
    return text;
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* in_data, std::size_t in_size) {
    const std::string contents(reinterpret_cast<const char*>(in_data), in_size);
    DialogValues values;
    try {
        values = ParseInitialValues(contents, FILE_NAME);
    } catch (const std::runtime_error& error) {
        CheckRefusal(contents, error.what());
        return 0;
    }
    for (const DialogField& field : DIALOG_FIELDS) {
        const std::size_t room = MAX_VALUE_LENGTH - sizeof BEFORE - sizeof BEHIND;
        if ((values.*field.m_value)->size() > room) return 0;
    }
    const DialogValues again = ParseInitialValues(Write(values), FILE_NAME);
    for (const DialogField& field : DIALOG_FIELDS) {
        const std::string value = BEFORE + EncodeUtf8(*(values.*field.m_value)) + BEHIND;
        Require(EncodeUtf8(*(again.*field.m_value)) == value, "wrong value", field.m_key);
    }
    return 0;
}
