#include "smf/smf.h"

#include <algorithm>
#include <cstring>
#include <new>

#include "platform/file_io.h"

namespace {

constexpr std::size_t SearchBlock = 8192;

// State of one ReadSMF call, reset at its start.
struct ReadState {
  uint32_t metaDelta = 0;
  uint32_t absTime = 0;
  uint32_t lastMetaTick = 0xFFFFFFFFu;
  uint32_t lyricOffset = 0;
  uint8_t lastLyricChar = 0;
};

// ---- reading bytes of the image ----

uint8_t byteAt(const SmfFile& smf, uint32_t& position) {
  const uint8_t b = position < smf.image.size() ? smf.image[position] : 0;
  ++position;
  return b;
}

// Moves a position on by a length; a length past the file's end stops at the
// end, so that a huge length can never wrap the position back into the file.
void skip(const SmfFile& smf, uint32_t& position, uint32_t length) {
  position = static_cast<uint32_t>(std::min<uint64_t>(uint64_t{position} + length, smf.image.size()));
}

uint32_t readVariable(const SmfFile& smf, uint32_t& position) {
  uint32_t value = 0;
  uint8_t b = 0;
  do {
    b = byteAt(smf, position);
    value = value << 7 | (b & 0x7F);
  } while ((b & 0x80) != 0 && position <= smf.image.size());  // past the end every byte is 0
  return value;
}

uint32_t readBigEndian32(const SmfFile& smf, uint32_t& position) {
  uint32_t value = 0;
  for (int i = 0; i < 4; ++i) value = value << 8 | byteAt(smf, position);
  return value;
}

// Searches for a tag from a position, block by block as the file is read: a
// tag that lies across two blocks of 8192 bytes is not seen. Gives the
// position after the tag's length word, and the length, or false.
bool findChunk(const SmfFile& smf, const char* tag, uint32_t from, uint32_t& dataStart, uint32_t& length) {
  const std::size_t size = smf.image.size();
  for (std::size_t block = from; block < size; block += SearchBlock) {
    const std::size_t end = std::min(size, block + SearchBlock);
    for (std::size_t at = block; at + 4 <= end; ++at) {
      if (std::memcmp(smf.image.data() + at, tag, 4) != 0) continue;
      auto position = static_cast<uint32_t>(at + 4);
      length = readBigEndian32(smf, position);
      dataStart = position;
      return true;
    }
  }
  return false;
}

// ticks per quarter note at 120 beats a minute, from an SMPTE division word.
uint16_t smpteDivision(uint16_t word) {
  // Frame lengths in microseconds for the rates -30 to -24, indexed by the rate plus 30.
  static constexpr uint32_t FrameLength[7] = {33333, 33367, 0, 0, 0, 40000, 41667};
  const auto rate = static_cast<int8_t>(word >> 8);
  const int index = rate + 30;
  uint32_t frame = index >= 0 && index < 7 ? FrameLength[index] : 0;
  if (frame == 0) frame = FrameLength[0];  // a rate outside the table counts as 30 frames a second
  return static_cast<uint16_t>((word & 0xFF) * 500000u / frame);
}

void readHeader(SmfFile& smf) {
  uint32_t start = 0, length = 0;
  if (!findChunk(smf, "MThd", 0, start, length)) return;
  // A header that the file cannot hold, or one too short for its three words, sets nothing.
  if (length < 6 || uint64_t{start} + length > smf.image.size()) return;
  const auto word = [&](uint32_t at) {
    return static_cast<uint16_t>(smf.image[start + at] << 8 | smf.image[start + at + 1]);
  };
  smf.format = word(0);
  smf.trackCount = word(2);
  smf.division = word(4);
  if ((smf.division & 0x8000) != 0) smf.division = smpteDivision(smf.division);
}

// What a meta event's data can hold: its length, but no more than the file has left.
uint32_t dataInFile(const SmfFile& smf, uint32_t position, uint32_t length) {
  const uint64_t left = position < smf.image.size() ? smf.image.size() - position : 0;
  return static_cast<uint32_t>(std::min<uint64_t>(length, left));
}

void giveLyric(SmfFile& smf, SmfTrackState& track, ReadState& state, uint32_t claimed, MidiEvent& event) {
  // A text that claims more than the file holds is the rest of the file.
  const uint32_t length = dataInFile(smf, track.position, claimed);
  uint32_t n = length;
  for (uint32_t i = 0; i < length; ++i) {
    const uint8_t c = byteAt(smf, track.position);
    if (i == 0 && IsLyricLetter(c) && IsLyricLetter(state.lastLyricChar)) ++n;
    if (c == 10) ++n;
    if (i + 1 == length) state.lastLyricChar = c;
  }
  const auto start = static_cast<uint16_t>(state.lyricOffset);
  const auto end = static_cast<uint16_t>(state.lyricOffset + n);
  event.value1 = static_cast<uint8_t>(start >> 8);
  event.value2 = static_cast<uint8_t>(start);
  event.value3 = static_cast<uint8_t>(end >> 8);
  event.playedChannel = static_cast<uint8_t>(end);
  state.lyricOffset += n;
}

// Reads the track's next event into event; false when none is given out.
bool readEvent(SmfFile& smf, uint32_t trackNumber, SmfTrackState& track, ReadState& state, MidiEvent& event) {
  uint32_t time = 0;
  // Each meta event skipped loops once; the bytes run out at the file's end,
  // after which every byte reads as 0, a data byte that is given out.
  for (;;) {
    if (track.ended == 1) return false;
    event = MidiEvent{};
    if (track.sysexLeft == 0) {
      time = readVariable(smf, track.position);
      state.absTime += time;
    }
    const uint8_t b = byteAt(smf, track.position);
    if (b == 0xFF) {
      state.metaDelta += time;
      const uint8_t type = byteAt(smf, track.position);
      const uint32_t length = readVariable(smf, track.position);
      const bool tempo = type == META_TEMPO && trackNumber == 0;
      const bool lyric = type == META_LYRIC;
      if (type == META_END_OF_TRACK) {
        readVariable(smf, track.position);
        skip(smf, track.position, length);
        track.ended = 1;
        return false;
      }
      if ((tempo || lyric) && state.absTime != state.lastMetaTick) {
        state.lastMetaTick = state.absTime;
        if (tempo) {
          event.value1 = byteAt(smf, track.position);
          event.value2 = byteAt(smf, track.position);
          event.value3 = byteAt(smf, track.position);
          skip(smf, track.position, length > 3 ? length - 3 : 0);
        } else {
          giveLyric(smf, track, state, length, event);
        }
        event.metaType = type;
        event.time = state.metaDelta;
        state.metaDelta = 0;
        return true;
      }
      skip(smf, track.position, length);  // any other meta event, or a second one at the same tick
      continue;
    }
    if (b == 0xF0) {
      track.status = 0xF0;
      event.status = 0xF0;
      event.value1 = 0xF0;
      event.time = time;
      track.sysexLeft = readVariable(smf, track.position);
      return true;
    }
    if (b == 0xF7) {
      track.status = 0xF0;
      event.status = 0xF0;
      event.value1 = 0xF7;
      track.sysexLeft -= 1;  // wraps at 0, so that what follows reads as sysex: files read so stay so
      return true;
    }
    if (b < 0x80 || track.sysexLeft != 0) {
      const uint8_t status = b < 0x80 ? track.status : 0xF0;
      if (status == 0xF0) {
        event.status = 0xF0;
        event.value1 = b;
        track.sysexLeft -= 1;
        return true;
      }
      // A data byte before any status has nothing to belong to: it is passed
      // over, and at the file's end, where only zeros follow, the track ends.
      if (status == 0) {
        if (track.position >= smf.image.size()) track.ended = 1;
        continue;
      }
      event.status = status;
      event.value1 = b;
      if (MidiDataBytes(status) == 2) event.value2 = byteAt(smf, track.position);
      event.time = time + state.metaDelta;
      state.metaDelta = 0;
      return true;
    }
    track.status = b;
    event.status = b;
    const int data = MidiDataBytes(b);
    if (data >= 1) event.value1 = byteAt(smf, track.position);
    if (data == 2) event.value2 = byteAt(smf, track.position);
    event.time = time + state.metaDelta;
    state.metaDelta = 0;
    return true;
  }
}

// ---- writing ----

bool put(SmfFile& smf, const std::vector<uint8_t>& bytes) {
  const bool written = bytes.empty() || std::fwrite(bytes.data(), 1, bytes.size(), smf.file) == bytes.size();
  if (!written) smf.writeFailed = true;
  return written;
}

std::vector<uint8_t> bigEndian(uint32_t value, int bytes) {
  std::vector<uint8_t> out;
  for (int i = bytes - 1; i >= 0; --i) out.push_back(static_cast<uint8_t>(value >> (8 * i)));
  return out;
}

void writeChunkHeader(SmfFile& smf, uint32_t at, uint32_t length) {
  std::fseek(smf.file, static_cast<long>(at), SEEK_SET);
  put(smf, {'M', 'T', 'r', 'k'});
  put(smf, bigEndian(length, 4));
}

void writeFileHeader(SmfFile& smf) {
  std::fseek(smf.file, 0, SEEK_SET);
  put(smf, {'M', 'T', 'h', 'd'});
  put(smf, bigEndian(6, 4));
  put(smf, bigEndian(smf.format, 2));
  put(smf, bigEndian(smf.trackCount, 2));
  put(smf, bigEndian(smf.division, 2));
}

void startTrack(SmfFile& smf, uint32_t fileTrack) {
  if (fileTrack == smf.currentTrack) return;
  if (smf.currentTrack == 0xFFFFFFFFu) {
    std::fseek(smf.file, 0, SEEK_END);
    smf.chunkStart = static_cast<uint32_t>(std::ftell(smf.file));
    writeChunkHeader(smf, smf.chunkStart, 0);
  } else {
    WriteMetaEvent(&smf, fileTrack, META_END_OF_TRACK, nullptr, 0);
    const auto next = static_cast<uint32_t>(std::ftell(smf.file));
    writeChunkHeader(smf, smf.chunkStart, smf.chunkLength);
    smf.chunkStart = next;
    writeChunkHeader(smf, smf.chunkStart, 0);
    smf.format = 1;
  }
  std::fseek(smf.file, 0, SEEK_END);
  smf.runningStatus = 0;
  smf.chunkLength = 0;
  smf.trackCount = static_cast<uint16_t>(smf.trackCount + 1);
  smf.currentTrack = fileTrack;
}

// A song track's settings on an event of its own bytes, as it is written.
void shapeForFile(const SmfTrackSettings& t, MidiEvent& e) {
  const uint8_t kind = e.status & 0xF0;
  if (e.status < 0x80 || e.status >= 0xF0) return;
  if (t.channel != 255) e.status = static_cast<uint8_t>(kind | (t.channel & 0x0F));
  if (kind == 0x80 || kind == 0x90) e.value1 = static_cast<uint8_t>(FoldKey(e.value1 + t.keyOffset));
  if (kind == 0x90 && e.value2 != 0) e.value2 = static_cast<uint8_t>(std::clamp(e.value2 + t.velocityOffset, 1, 127));
}

void encode(SmfFile& smf, const MidiEvent& e, std::vector<uint8_t>& out) {
  const auto time = EncodeVariableLength(e.time);
  out.insert(out.end(), time.begin(), time.end());
  if (e.status == 0) {  // every meta event goes out as a tempo, a lyric with its offsets too
    out.insert(out.end(), {0xFF, 0x51, 0x03, e.value1, e.value2, e.value3});
    return;
  }
  if (e.status != smf.runningStatus) {
    out.push_back(e.status);
    smf.runningStatus = e.status;
  }
  const int data = MidiDataBytes(e.status);
  if (data >= 1) out.push_back(e.value1);
  if (data == 2) out.push_back(e.value2);
}

uint32_t metaLength(uint8_t type, const char* data) {
  switch (type) {
    case 0x51:
      return 3;
    case 0x54:
      return 5;
    case 0x58:
      return 4;
    case 0x20:
      return 1;
    case 0x00:
    case 0x59:
      return 2;
    default:
      if ((type >= 1 && type <= 7) || type == 0x7F)
        return data != nullptr ? static_cast<uint32_t>(std::strlen(data)) : 0;
      return 0;
  }
}

}  // namespace

bool IsLyricLetter(uint8_t c) {
  if ((c >= 'A' && c <= 'Z') || (c >= 'a' && c <= 'z')) return true;
  if (c == 0x8A || c == 0x8C || c == 0x8E || c == 0x9A || c == 0x9C || c == 0x9E || c == 0x9F) return true;
  if (c == 0xAA || c == 0xB5 || c == 0xBA) return true;
  return c >= 0xC0 && c != 0xD7 && c != 0xF7;
}

std::vector<uint8_t> EncodeVariableLength(uint32_t value) {
  value = std::min<uint32_t>(value, 0x0FFFFFFF);
  std::vector<uint8_t> bytes{static_cast<uint8_t>(value & 0x7F)};
  while ((value >>= 7) != 0) bytes.insert(bytes.begin(), static_cast<uint8_t>((value & 0x7F) | 0x80));
  return bytes;
}

uint32_t OpenSMF(SmfFile** smf, const char* path, uint32_t* format, uint8_t mode) {
  if (smf == nullptr || path == nullptr || format == nullptr) return SMF_FAILED;
  if (*smf != nullptr && !(*smf)->path.empty()) {  // a reopen after SuspendSMF
    SmfFile& s = **smf;
    if (s.mode == 'w') {
      s.file = std::fopen(s.path.c_str(), "r+b");
      if (s.file == nullptr) return SMF_FAILED;
    }
    *format = s.format;
    return s.trackCount;
  }
  if (mode == 'r') {
    platform::FileContents file = platform::ReadWholeFile(path);
    if (!file.ok()) return SMF_FAILED;
    const uint32_t tracks = OpenSMFImage(smf, std::move(file.bytes), format);
    if (tracks != SMF_FAILED) (*smf)->path = path;
    return tracks;
  }
  if (mode != 'w') return SMF_FAILED;
  std::FILE* file = std::fopen(path, "w+b");
  if (file == nullptr) return SMF_FAILED;
  const uint32_t opened = OpenSMFWriter(smf, file, format);
  if (opened == SMF_FAILED) {
    std::fclose(file);
    return SMF_FAILED;
  }
  (*smf)->path = path;
  (*smf)->ownsFile = true;
  return opened;
}

uint32_t OpenSMFWriter(SmfFile** smf, std::FILE* file, uint32_t* format) {
  if (smf == nullptr || file == nullptr || format == nullptr) return SMF_FAILED;
  auto* s = new (std::nothrow) SmfFile;
  if (s == nullptr) return SMF_FAILED;
  s->mode = 'w';
  s->file = file;
  s->ownsFile = false;
  s->format = static_cast<uint16_t>(*format);
  s->division = 480;
  s->currentTrack = 0xFFFFFFFFu;
  writeFileHeader(*s);
  *smf = s;
  return 0;
}

uint32_t OpenSMFImage(SmfFile** smf, std::vector<uint8_t> image, uint32_t* format) {
  if (smf == nullptr || format == nullptr) return SMF_FAILED;
  auto* s = new (std::nothrow) SmfFile;
  if (s == nullptr) return SMF_FAILED;
  s->mode = 'r';
  s->image = std::move(image);
  uint32_t start = 0, length = 0;
  if (s->image.size() > 0xFFFFFFF0u || !findChunk(*s, "MThd", 0, start, length)) {
    delete s;
    return SMF_FAILED;
  }
  readHeader(*s);
  if (s->format == 2) s->format = 1;
  *format = s->format;
  s->tracks.resize(s->trackCount);
  s->metaBuffer.resize(1);
  *smf = s;
  RewindSMF(s);
  return s->trackCount;
}

uint32_t CloseSMF(SmfFile** smf) {
  if (smf == nullptr || *smf == nullptr) return 0;
  SmfFile& s = **smf;
  if (s.mode == 'w' && s.file != nullptr && s.chunkStart != 0) {
    WriteMetaEvent(&s, s.currentTrack, META_END_OF_TRACK, nullptr, 0);
    writeChunkHeader(s, s.chunkStart, s.chunkLength);
    writeFileHeader(s);
  }
  bool failed = s.writeFailed;
  if (s.file != nullptr) {
    if (s.mode == 'w' && (std::fflush(s.file) != 0 || std::ferror(s.file) != 0)) failed = true;
    if (s.ownsFile && std::fclose(s.file) != 0 && s.mode == 'w') failed = true;
  }
  delete *smf;
  *smf = nullptr;
  return failed ? SMF_FAILED : 0;
}

uint32_t SuspendSMF(SmfFile* smf) {
  if (smf == nullptr || smf->file == nullptr || !smf->ownsFile) return 0;
  const int result = std::fclose(smf->file);
  smf->file = nullptr;
  return static_cast<uint32_t>(result);
}

uint32_t RewindSMF(SmfFile* smf) {
  if (smf == nullptr) return 0;
  if (smf->mode == 'w') return 1;
  uint32_t from = 0;
  bool found = true;
  for (SmfTrackState& track : smf->tracks) {
    uint32_t start = 0, length = 0;
    // A track the header promises but the file lacks is empty.
    found = found && findChunk(*smf, "MTrk", from, start, length);
    if (!found) {
      track.position = static_cast<uint32_t>(smf->image.size());
      track.length = 0;
      track.ended = 1;
      track.metaPositions.fill(0xFFFFFFFFu);
      continue;
    }
    track.position = start;
    track.length = length;
    track.ended = 0;
    track.metaPositions.fill(start);
    from = start;
  }
  smf->currentTrack = 0;
  smf->filePos = smf->tracks.empty() ? 0 : smf->tracks[0].position;
  return 0;
}

uint32_t ReadSMF(SmfFile* smf, uint32_t track, MidiEvent* events, uint32_t maxEvents) {
  if (smf == nullptr || smf->mode != 'r' || track >= smf->tracks.size() || events == nullptr) return 0;
  ReadState state;
  smf->currentTrack = track;
  SmfTrackState& t = smf->tracks[track];
  uint32_t stored = 0;
  while (stored < maxEvents && readEvent(*smf, track, t, state, events[stored])) ++stored;
  smf->filePos = t.position;
  return stored;
}

uint32_t GetSMFResolution(SmfFile* smf) { return smf != nullptr && smf->mode == 'r' ? smf->division : 0; }

uint32_t ReadMetaEvent(SmfFile* smf, uint32_t track, uint8_t type, const uint8_t** data, uint32_t* length) {
  if (smf == nullptr || smf->mode != 'r' || track >= smf->tracks.size() || type >= 127) return SMF_FAILED;
  SmfTrackState& t = smf->tracks[track];
  uint32_t position = t.metaPositions[type];
  if (position == 0xFFFFFFFFu) return SMF_FAILED;
  uint32_t ticks = 0;
  const auto size = static_cast<uint32_t>(smf->image.size());
  // The scan stops at the file's end, where a track without its end would otherwise read zeros forever.
  while (position < size) {
    ticks += readVariable(*smf, position);
    const uint8_t b = byteAt(*smf, position);
    if (b == 0xF0 || b == 0xF7) {
      skip(*smf, position, readVariable(*smf, position));
    } else if (b == 0xFF) {
      const uint8_t found = byteAt(*smf, position);
      uint32_t dataLength = readVariable(*smf, position);
      if (found == META_END_OF_TRACK) break;
      if (found == type) {
        const uint32_t begin = position;
        dataLength = dataInFile(*smf, position, dataLength);  // a length past the file's end gives what is there
        skip(*smf, position, dataLength);
        t.metaPositions[type] = position;
        if (length != nullptr) *length = dataLength;
        if (data != nullptr) *data = nullptr;
        if (dataLength != 0) {
          try {
            smf->metaBuffer.assign(dataLength, 0);
          } catch (const std::bad_alloc&) {
            return SMF_FAILED;
          }
          uint32_t at = begin;
          for (uint8_t& byte : smf->metaBuffer) byte = byteAt(*smf, at);
          if (data != nullptr) *data = smf->metaBuffer.data();
        }
        return ticks;
      }
      skip(*smf, position, dataLength);
    } else if (b >= 0x80) {
      t.scanStatus = b;
      position += static_cast<uint32_t>(MidiDataBytes(b));
    } else if (MidiDataBytes(t.scanStatus) == 2) {
      position += 1;  // the second data byte of a message in running status
    }
  }
  t.metaPositions[type] = 0xFFFFFFFFu;
  return SMF_FAILED;
}

uint32_t SetSMFResolution(SmfFile* smf, uint32_t resolution) {
  if (smf == nullptr || smf->mode != 'w') return 0;
  smf->division = static_cast<uint16_t>(resolution);
  return smf->division;
}

uint32_t SetSMFTrackSettings(SmfFile* smf, uint32_t songTrack, const SmfTrackSettings& settings) {
  if (smf == nullptr || smf->mode != 'w' || songTrack >= SmfSongTracks) return 0;
  if (smf->songTracks.size() < SmfSongTracks) smf->songTracks.resize(SmfSongTracks);
  smf->songTracks[songTrack] = settings;
  return 1;
}

uint32_t WriteSMF(SmfFile* smf, uint32_t fileTrack, const MidiEvent* events, uint32_t count, uint32_t songTrack) {
  if (smf == nullptr || smf->mode != 'w' || smf->file == nullptr || songTrack >= SmfSongTracks) return 0;
  const SmfTrackSettings t = songTrack < smf->songTracks.size() ? smf->songTracks[songTrack] : SmfTrackSettings{};
  startTrack(*smf, fileTrack);
  std::vector<uint8_t> out;
  // With no stored event the settings go out on channel 1.
  const uint8_t channel = t.channel != 255 ? t.channel : t.storedChannel;
  const auto setting = [&](uint8_t status, uint8_t value1, uint8_t value2) {
    const MidiEvent e{0, static_cast<uint8_t>(status | channel), value1, value2, 0, nullptr, 0, 0, 0, 0};
    encode(*smf, e, out);
  };
  if (t.pan != 255) setting(0xB0, 10, t.pan);
  if (t.volume != 255) setting(0xB0, 7, t.volume);
  if (t.patch != 255) setting(0xC0, t.patch, 0);

  const uint32_t bar = t.ticksPerBar;
  // A bar of no ticks leaves no room to the next bar line: the next pass follows at once.
  const uint32_t pad = bar != 0 ? bar - static_cast<uint32_t>(t.storedTicks % bar) : 0;
  for (uint32_t pass = 0; pass <= t.repeats; ++pass) {
    for (uint32_t i = 0; i < count && events != nullptr; ++i) {
      MidiEvent e = events[i];
      shapeForFile(t, e);
      if (i == 0) e.time = pass == 0 ? e.time + t.timeOffset : pad;
      encode(*smf, e, out);
    }
    // Each pass reaches the file as it is made, so no repeat count can exhaust the memory.
    put(*smf, out);
    smf->chunkLength += static_cast<uint32_t>(out.size());
    out.clear();
  }
  return count * (uint32_t{t.repeats} + 1);
}

uint32_t WriteMetaEvent(SmfFile* smf, uint32_t, uint8_t type, const char* data, uint32_t time) {
  if (smf == nullptr || smf->mode != 'w' || smf->file == nullptr) return SMF_FAILED;
  const uint32_t length = metaLength(type, data);
  std::vector<uint8_t> out = EncodeVariableLength(time);
  out.push_back(0xFF);
  out.push_back(type);
  const auto lengthBytes = EncodeVariableLength(length);
  out.insert(out.end(), lengthBytes.begin(), lengthBytes.end());
  for (uint32_t i = 0; i < length; ++i) out.push_back(data != nullptr ? static_cast<uint8_t>(data[i]) : 0);
  smf->chunkLength += static_cast<uint32_t>(out.size());
  return put(*smf, out) ? 0 : SMF_FAILED;
}
