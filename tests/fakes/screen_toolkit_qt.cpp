#include "fakes/qt_driver.h"
#include "fakes/toolkits.h"

const ToolkitUnderTest screenToolkit{"Qt", &makeQtDriver};
