// Uses strings, encodings, numbers and errors of the support library in a separate program.
//
// Without CMake: g++ -std=c++20 main.cpp $(pkg-config --cflags --libs orska)
#include <cstdio>
#include <exception>
#include <string>

#include <orska/Exceptions/ErrorException.h>
#include <orska/PlatformAbstraction/ICU/ICUUtils.h>
#include <orska/PlatformAbstraction/numbers/NumberConverter.h>
#include <orska/PlatformAbstraction/strings/orska_wstring.h>

using Orska::Support::ErrorException;
using Orska::Support::NumberConverter;
using Orska::Support::orska_wstring;

namespace {

/// Prints the bytes of a text in an encoding.
void PrintBytes(const char* in_encoding, const orska_wstring& in_text) {
    const auto encoding = Orska::Support::ICUUtils::GetEncodingEnum(in_encoding);
    std::printf("%s:", in_encoding);
    for (const char byte : in_text.GetAsAnsiString(encoding)) {
        std::printf(" %02x", static_cast<unsigned char>(byte));
    }
    std::printf("\n");
}

void Print(const orska_wstring& in_number, const orska_wstring& in_text) {
    std::printf("number: %d\n", NumberConverter::StringToInteger<int>(in_number, true));
    PrintBytes("UTF-16LE", in_text);
    PrintBytes("KOI8-R", in_text);
}

}  // namespace

int main(int argc, char** argv) {
    if (argc != 3) {
        std::fprintf(stderr, "usage: consumer NUMBER TEXT\n");
        return 2;
    }
    try {
        Print(argv[1], argv[2]);
    } catch (const ErrorException& exception) {
        std::fprintf(stderr, "consumer: %s\n",
                     exception.GetUnformattedDescription().GetAsUtf8().c_str());
        return 1;
    } catch (const std::exception& exception) {
        std::fprintf(stderr, "consumer: %s\n", exception.what());
        return 1;
    }
    return 0;
}
