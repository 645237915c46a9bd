#pragma once

// Every file here gets the Windows headers through this one.
#include <windows.h>

#include <commctrl.h>
