// The parts that are the same on every system.
#include "tests/child_process.h"

#include <gtest/gtest.h>

#include <cstdio>
#include <utility>

#include "cli/console_program.h"
#include "generators/random.h"
#include "platform/debug_line.h"
#include "platform/files.h"
#include "platform/parallel_rows.h"
#include "platform/path_text.h"
#include "platform/utf8.h"

namespace skyvault::test {

namespace {

std::vector<std::wstring> Words(const std::string& line) {
    std::istringstream stream(line);
    std::vector<std::wstring> words;
    for (std::string word; stream >> word;) words.push_back(FromUtf8(word));
    return words;
}

}  // namespace

ProgramResult ChildProcess::Wait() {
    HasEnded(true);
    ProgramResult result{exitStatus_, folder_.Read(L"out"), folder_.Read(L"err")};
#ifdef _WIN32
    for (std::string* const text : {&result.out, &result.err}) std::erase(*text, '\r');
#endif
    return result;
}

std::wstring ConsoleProgramPath() {
#ifdef _WIN32
    return JoinPath(ProgramFolder(), L"skyvault-cli.exe");
#else
    return JoinPath(ProgramFolder(), L"skyvault-cli");
#endif
}

ProgramResult RunConsole(const std::vector<std::wstring>& arguments) {
    const DebugLineCapture quiet;
    ProgramResult result;
    testing::internal::CaptureStdout();
    testing::internal::CaptureStderr();
#ifndef _WIN32
    // As in the program: what picture libraries print is nobody's to read.
    static std::FILE* nowhere = std::fopen("/dev/null", "w");
    std::swap(stderr, nowhere);
#endif
    result.exitStatus = RunConsoleProgram(arguments);
#ifndef _WIN32
    std::swap(stderr, nowhere);
#endif
    result.out = testing::internal::GetCapturedStdout();
    result.err = testing::internal::GetCapturedStderr();
    for (std::string* const text : {&result.out, &result.err}) std::erase(*text, '\r');
    ClearFixedSeed();
    SetThreadCount(0);
    return result;
}

ProgramResult RunConsole(const std::string& line, const std::vector<std::wstring>& arguments) {
    std::vector<std::wstring> all = Words(line);
    all.insert(all.end(), arguments.begin(), arguments.end());
    return RunConsole(all);
}

std::vector<std::wstring> ArgumentsOf(const DataRow& row, const std::wstring& folder) {
    std::vector<std::wstring> arguments = Words(row.cells.size() > 1 ? row[1] : "");
    for (std::size_t i = 2; i < row.cells.size(); ++i) {
        const bool isFile = row[i].starts_with('@');
        const std::wstring text = FromUtf8(row[i].substr(isFile ? 1 : 0));
        arguments.push_back(!isFile ? text : text.empty() ? folder : JoinPath(folder, text));
    }
    return arguments;
}

}  // namespace skyvault::test
