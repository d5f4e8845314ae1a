#include "fakes/toolkits.h"
#include "fakes/win32_driver.h"

const ToolkitUnderTest screenToolkit{"Win32", &makeWin32Driver};
