#pragma once

#include <cstdint>

#include "orvogeneric/types.hpp"

// Single-instance mutexes, running and waiting for programs, pausing, the keyboard, and two
// small conversions between 0/1 and booleans.
namespace orvo::system {

String ORVOMutexName(const String& Path, const String& Stub = {});
std::int32_t CreateMutex(const String& Mutex, CreateMutexEnum& Status);
VBool MutexAlreadyExists(const String& MutexName);
void SleepCurrentThread(double Seconds);
std::int32_t StartProcess(const String& CommandLine, VBool Hide);
VBool SyncShell(const String& CommandLine, std::int32_t TimeoutMilliseconds = 0,
                VBool WaitForInputIdle = VBool::False, VBool Hide = VBool::False);
VBool WaitForProcess(std::int32_t taskId, std::int32_t milliseconds = -1);
VBool IsKeyDown(std::int32_t lKeyCode);
VBool b1or0ToBoolean(std::int16_t nInput);
std::int16_t nBooleanTo1or0(VBool bInput);

}  // namespace orvo::system
