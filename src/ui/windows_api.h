#pragma once

// Every file here gets the Windows headers through this one.
#include <windows.h>

#include <commctrl.h>

// A leftover of 16-bit Windows that would swallow RunView::Yield.
#undef Yield
