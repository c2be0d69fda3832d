// Why a replay gives no document or only a part of it: a code for programs, a reason for people.
#pragma once

#include <memory>
#include <stdexcept>
#include <string>
#include <utility>

#include <napi.h>

#include "games/corvane/corvane-lib/src/replay-parser.h"

namespace orvel::corvane {

struct ReadFailure {
    const char* code;  // see read-replay-document.h
    std::string reason;
};

// An exception that carries a ReadFailure.
class Refusal : public std::runtime_error {
  public:
    explicit Refusal(ReadFailure failure)
        : std::runtime_error(failure.reason), m_failure(std::move(failure)) {}
    const ReadFailure& Failure() const { return m_failure; }

  private:
    ReadFailure m_failure;
};

// Opens the file and makes a parser over it. Throws a Refusal if the file cannot be opened.
std::unique_ptr<ReplayParser> OpenReplay(const std::wstring& path);

// Throws a Refusal if an event could not be decrypted. The parser skips such an event with a line on standard
// output. Where nobody reads that line, a document without the event would look complete.
void CheckDecryption(const ReplayParser& parser);

// Only in a catch block: what the current exception says about the file. isCut: reading hit the end of the
// file.
ReadFailure CurrentFailure(bool isCut);

// Makes a JavaScript Error with the code and the reason.
Napi::Error ErrorOf(Napi::Env env, const ReadFailure& failure);

}  // namespace orvel::corvane
