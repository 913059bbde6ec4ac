// Every fixed limit of the runtime, with its reason.
#pragma once

#include <cstddef>
#include <cstdint>

namespace vl::limits {

// What one run may hold in texts, arrays, variables, objects and surfaces. A page gives 4 GB in all.
inline constexpr uint64_t kRunMemoryBytes = uint64_t{1} << 30;
// Memory taken since the last collection that brings the next one, before it is due by the number of new objects: a
// thousand surfaces of a screen's size would be above what a run may hold.
inline constexpr uint64_t kCollectAfterBytes = uint64_t{64} << 20;
// One text. Larger ones only come from runaway concatenation.
inline constexpr uint32_t kMaxTextBytes = 64u << 20;
// Script calls in progress. The platform stack of the interpreter's thread must hold them (kThreadStackBytes),
// and old programs, which had about a megabyte, never got further.
inline constexpr int kMaxCallDepth = 4000;
// Nesting of parentheses, subscripts and blocks while compiling and evaluating. Bounds the recursion of both.
inline constexpr int kMaxNesting = 1000;
// Evaluations in progress (parentheses, arguments, subscripts), over all calls.
inline constexpr int kMaxEvaluationDepth = 32000;
// Slots of the evaluation stack (2 MB): a dozen for each of kMaxCallDepth calls.
inline constexpr size_t kMaxValues = 65536;
// Stack of the interpreter's thread: kMaxCallDepth calls of a few nested expressions each, with sanitizers.
inline constexpr size_t kThreadStackBytes = size_t{256} << 20;
// Levels of the argument bank and arguments a level; both are part of the language.
inline constexpr int kArgumentLevels = 16;
inline constexpr int kArgumentsPerLevel = 16;
// A text literal must fit a token record, whose size is one byte.
inline constexpr size_t kMaxLiteralBytes = 243;
// The position word has 8 bits for the source and 24 for the offset.
inline constexpr size_t kMaxSources = 256;
inline constexpr size_t kMaxSourceBytes = size_t{1} << 24;
// The token stream; its offsets have 32 bits.
inline constexpr size_t kMaxStreamBytes = size_t{512} << 20;
// A surface side: 16-bit coordinates are what files and windows carry.
inline constexpr int kMaxSurfaceSide = 32767;
// Pixels of one surface (256 MB at 32 bits).
inline constexpr int64_t kMaxSurfacePixels = int64_t{1} << 26;
// Pixels of the pictures that all windows of a run keep (512 MB); a window beyond shows nothing.
inline constexpr int64_t kMaxWindowPixels = int64_t{1} << 27;
// Windows inside one another; bounds the recursion over them.
inline constexpr int kMaxWindowNesting = 100;

// A text of game input settings. What is made of it takes some forty times its size.
inline constexpr size_t kMaxInputSettingsBytes = size_t{1} << 20;

// One message of the network layer. Peers send texts; a larger one ends the connection.
inline constexpr size_t kMaxNetMessageBytes = size_t{1} << 20;
// Bytes that wait to be sent to one peer, and to all peers of a run: a peer beyond that reads too slowly and is let go.
inline constexpr size_t kMaxNetQueueBytes = size_t{8} << 20;
inline constexpr size_t kMaxNetQueuedBytes = size_t{256} << 20;
// A peer that takes nothing for that long, or doesn't come about, is gone.
inline constexpr uint32_t kNetPatienceMs = 60000;
// What peers can make: connections of a server, sessions of a server and of a connection, users of a channel.
inline constexpr size_t kMaxNetConnections = 1024;
inline constexpr size_t kMaxNetSessions = 4096;
inline constexpr size_t kMaxNetSessionsEach = 256;
inline constexpr size_t kMaxNetUsers = 4096;
// Names of players and sessions, which travel with many messages.
inline constexpr size_t kMaxNetNameBytes = 4096;
// Datagrams that one socket takes in a poll; more may come faster than they are handled.
inline constexpr int kMaxNetDatagrams = 1024;

}  // namespace vl::limits
