// clMessageBox: the program's one way of asking the user a modal question.
//
// Callers don't know how it is asked: a test may install a handler; with
// QUILLOTONE_NONINTERACTIVE=1 in the environment, or when the platform
// can't ask anybody (no display and no terminal), the default answer is
// taken and one line on standard error says what was asked and what was
// answered. Defaults never risk anything: Cancel for Retry/Cancel and
// OK/Cancel, No for Yes/No, Cancel for Yes/No/Cancel, Abort for
// Abort/Retry/Ignore, OK otherwise.
#pragma once

#include <cstdint>
#include <functional>

#include "foundation/clstring.h"

constexpr int clIdOk = 1;
constexpr int clIdCancel = 2;
constexpr int clIdAbort = 3;
constexpr int clIdRetry = 4;
constexpr int clIdYes = 6;
constexpr int clIdNo = 7;

constexpr uint32_t clMbOk = 0x0;
constexpr uint32_t clMbRetryCancel = 0x5;
constexpr uint32_t clMbYesNo = 0x4;
constexpr uint32_t clMbIconInformation = 0x40;
constexpr uint32_t clMbTopmost = 0x40000;

using clMessageBoxHandler = std::function<int(const clString& text, const clString& caption, uint32_t type)>;

int clMessageBox(const clString& text, const clString& caption, uint32_t type);
// Installs a handler for every later question (null restores the default).
void SetMessageBoxHandler(clMessageBoxHandler handler);
int DefaultMessageBoxAnswer(uint32_t type);
