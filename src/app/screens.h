#pragma once

namespace orvo::app {
// Registers every screen of every area with the shell's ScreenRegistry. Called once at start.
void registerAllScreens();
} // namespace orvo::app
