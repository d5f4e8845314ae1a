// A System is the one of each that the composition root has picked. It owns nothing.
#pragma once

namespace platform {

class AutomationFactory;
class Clock;
class DatabaseEngine;
class Drives;
class FileSystem;
class Process;
class SettingsStore;
class Toolkit;

struct System {
    SettingsStore& settings;
    DatabaseEngine& database;
    AutomationFactory& automation;
    Toolkit& toolkit;
    FileSystem& files;
    Process& process;
    Drives& drives;
    Clock& clock;
};

}  // namespace platform
