// What tn tells the shell, the same for every command.
#pragma once

namespace ExitCode
{
constexpr int kDone = 0;
constexpr int kSomeFailed = 1; // some objects failed, or a negative answer
constexpr int kWrongUse = 2;
constexpr int kCouldNotRead = 3;
constexpr int kCouldNotWrite = 4;
constexpr int kNoConnection = 5;
constexpr int kRejected = 6;
constexpr int kNoContext = 7;
constexpr int kPeerFailed = 8;
constexpr int kTimedOut = 9;
constexpr int kCancelled = 10;
} // namespace ExitCode
