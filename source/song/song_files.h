#pragma once
// The song file commands: New, Open, Save and Save as, the question that
// guards unsaved work, and the translation between the song and a Standard
// MIDI File: which file track becomes which song track, where tempo, meter,
// names and lyrics go. UI thread only, with the transport stopped.

#include <cstdint>
#include <string>

struct SmfFile;


extern int32_t SaveResult;        // the last save's or prompt's answer: 0 means do not go on
extern SmfFile* SongReadHandle;   // the file a load is reading, null otherwise

// Empties the song: one tempo event in the tempo track, 120 ticks a quarter,
// 60 beats a minute, no names, rows, lyrics or selection. The meter, the
// edit buffers and the generator stay as they are.
void ResetSong();

// Non-zero when the caller may go on: the song is clean, or the user saved
// it, or chose not to.
int SavePrompt();
void NewSong();
void OpenSongDialog();
// Replaces the song with a file's. A file that cannot be read is said so and
// changes nothing: false. Once it is read the old song is gone, and a file
// that is no MIDI file leaves an empty song. True also when the user cancels
// at the question that guards unsaved work.
bool LoadSong(const std::string& path);
// Open's work once a file is chosen: the load, and the path as the song's title.
bool OpenSongFile(const std::string& path);
void SaveSong();
void SaveSongAs();
// Writes the song as a format 1 file: 1 when written, 0 when not. The file
// is saved through SaveFileSafely, so a failed save leaves the old file as
// it was, and a save to a symbolic link replaces the file it leads to.
int WriteSong(const std::string& path);
