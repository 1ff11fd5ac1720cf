// Tests of windows: the toolkit started headless (Qt's offscreen platform,
// Wine's null display driver), pixels read from a self-grab, and the grab
// kept as a PNG beside the test log when a test fails.
#pragma once

#include <cstdint>
#include <string>

#include "toolkit/canvas.h"
#include "toolkit/messages.h"

// The colour of a pixel of the window as it shows now (0x00BBGGRR), or
// clNoColor outside it.
uint32_t PixelOf(clWindowHandle window, int32_t x, int32_t y);
// Writes the window's grab to <test binary's folder>/grabs/<name>.png;
// answers the path.
std::string SaveGrab(clWindowHandle window, const std::string& name);
// Saves the grab under the running test's name if it has failed so far.
void SaveGrabIfFailed(clWindowHandle window);
// Lets the toolkit handle what waits (posted calls, repaints, deletions).
void Pump();
// True when two colours differ by at most `tolerance` in each channel.
bool NearColor(uint32_t a, uint32_t b, int tolerance = 24);
