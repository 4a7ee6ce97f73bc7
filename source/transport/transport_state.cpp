#include "transport/transport_state.h"

SharedWord<uint32_t> Playing, Recording, Capturing, Generating, Draining, Linked, SongPosition;
