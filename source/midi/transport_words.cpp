#include "midi/transport_words.h"

SharedWord<uint32_t> Playing, Recording, Capturing, Generating, Draining, Linked, SongPosition;
