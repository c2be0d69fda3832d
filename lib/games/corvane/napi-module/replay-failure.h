// Why a replay gives no document, or not all of it: a code for programs and a reason for people.
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

// A failure with its code.
class Refusal : public std::runtime_error {
  public:
    explicit Refusal(ReadFailure failure)
        : std::runtime_error(failure.reason), m_failure(std::move(failure)) {}
    const ReadFailure& Failure() const { return m_failure; }

  private:
    ReadFailure m_failure;
};

// A parser over the file. Throws a Refusal if the file cannot be opened.
std::unique_ptr<ReplayParser> OpenReplay(const std::wstring& path);

// Throws a Refusal if an event could not be decrypted. The parser skips such an event with a line on standard
// output. Where that line has no reader, a document without the event would pass for a whole one.
void CheckDecryption(const ReplayParser& parser);

// Only inside a catch block: what the exception that is being handled says about the file. isCut: reading ran
// into the end of the file.
ReadFailure CurrentFailure(bool isCut);

// A JavaScript Error with the code and the reason.
Napi::Error ErrorOf(Napi::Env env, const ReadFailure& failure);

}  // namespace orvel::corvane
