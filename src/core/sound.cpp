// The sound chip's register file.
#include "core/sound.h"

sound_registers sound;
