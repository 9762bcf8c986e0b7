// The demo cartridge that vemo-run carries inside itself and runs when no image is named: the
// 68000 sets up the screen and its objects, the GPU draws moving Gouraud-shaded shapes with the
// Blitter, the DSP plays a tone, button A changes both, and a start counter lives in the EEPROM.
//
// Offers: demo_image_file, which writes the image to a scratch file the core can load (the core
// takes images by path) and removes it when the program ends. Needs: the image bytes, generated
// at build time from tools/demo-cart.
#pragma once

#include <string>

// The path of a scratch copy of the demo cartridge, or an empty string (with a message on
// standard error) when it could not be written.
std::string demo_image_file();
