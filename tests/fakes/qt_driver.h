// The operator of a Qt window on a screen in memory, with real key and mouse events.
#pragma once

#include <memory>

#include "fakes/window_driver.h"

/// The screen in memory and the program's connection to it, made on the first call.
void connectToScreenInMemory();

std::unique_ptr<WindowDriver> makeQtDriver();
