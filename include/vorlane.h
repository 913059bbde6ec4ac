/* vorlane.h: the embedding interface of the Vorlane player, in plain C.
 *
 * A player runs one application at a time, on a thread of its own. The caller's thread creates the player, gives
 * it an application and parameters, runs it, and then calls vl_wait() regularly until the run has ended: with a
 * window on the desktop, vl_wait() is also what serves that window. All functions of one player are called from
 * one thread; several players may live in one process.
 *
 * Texts are NUL-terminated. Texts that go to or come from the program are code page 1252; paths are the
 * system's. Pointers that a function returns belong to the player and stay valid until the next call on it.
 */
#ifndef VORLANE_H
#define VORLANE_H

#include <stddef.h>
#include <stdint.h>

#ifdef __cplusplus
extern "C" {
#endif

#define VL_VERSION "0.1.0"

#if defined(__GNUC__)
#define VL_API __attribute__((visibility("default")))
#else
#define VL_API
#endif

typedef struct vl_player vl_player;

typedef enum vl_backend {
  VL_BACKEND_DESKTOP = 0,  /* a window on the desktop */
  VL_BACKEND_HEADLESS = 1, /* windows in memory; virtual clock unless asked otherwise */
  VL_BACKEND_EMBED = 2     /* windows in memory, real clock: the caller shows frames and gives input */
} vl_backend;

typedef enum vl_clock { VL_CLOCK_DEFAULT = 0, VL_CLOCK_REAL = 1, VL_CLOCK_VIRTUAL = 2 } vl_clock;

/* How a desktop window shows a picture of another size. */
typedef enum vl_scaling {
  VL_SCALE_FOLLOW = 0,  /* not at all: the program is told the window's size */
  VL_SCALE_INTEGER = 1, /* whole multiples, the rest is a black border */
  VL_SCALE_NEAREST = 2, /* as large as fits, sharp pixels */
  VL_SCALE_SMOOTH = 3   /* as large as fits, their edges blended */
} vl_scaling;

typedef struct vl_options {
  uint32_t struct_size;  /* sizeof(vl_options), set by vl_options_init */
  int32_t backend;       /* vl_backend */
  int32_t clock;         /* vl_clock */
  int32_t width, height; /* client size of the host's window in pixels; default 640 x 480 */
  int32_t detached;      /* 1: no host window, the program opens its own */
  int32_t has_seed;      /* 1: `seed` seeds the random generator */
  uint32_t seed;
  uint64_t max_time_ms; /* stop as the host would, after that much of the program's clock; 0: never */
  const char* title;    /* of the host's window; UTF-8, may be NULL */
  int32_t keep_globals; /* 1: vl_globals() works after the run */
  int32_t keep_input;   /* 1: vl_recorded_input() works after the run */
  /* Of the desktop back end. */
  int32_t scaling;      /* vl_scaling */
  int32_t full_screen;  /* 1: begins so */
  int32_t shell;        /* 1: the player's own keys, menu and error box; see vl_take_request */
  int32_t plain_walker; /* 1: runs without preparing the program; slower, for tests of the other way */
  /* Of the headless back end, whose network otherwise lies in memory. */
  int32_t real_network; /* 1: that of the machine */
} vl_options;

typedef enum vl_state { VL_IDLE = 0, VL_RUNNING = 1, VL_ENDED = 2 } vl_state;

typedef enum vl_result {
  VL_OK = 0,        /* the program ended or was stopped */
  VL_ERROR = 1,     /* a compile or script error: see vl_error */
  VL_UNREADABLE = 2 /* the application can't be read: see vl_error_detail */
} vl_result;

typedef enum vl_input_type {
  VL_INPUT_KEY = 1,   /* code: virtual key, down: 1 or 0 */
  VL_INPUT_CHAR = 2,  /* code: byte of code page 1252 */
  VL_INPUT_MOUSE = 3, /* x, y; code 0: move (down 1: x, y are a movement, which a held mouse gives), 1 left, 2 middle,
                         3 right, 4 the fourth button with down 1 (2: double click) or 0 */
  VL_INPUT_WHEEL = 4, /* code: 120 a notch, x, y */
  VL_INPUT_CLOSE = 5,
  VL_INPUT_RESIZE = 6, /* x, y: new client size */
  VL_INPUT_FOCUS = 7,  /* down: 1 or 0 */
  /* Joysticks: code is the joystick's number, 0 to 15. */
  VL_INPUT_JOYSTICK_ATTACH = 40,   /* text: "AXES ROTATIONS BUTTONS HATS NAME", at most 8, 8, 128 and 4 */
  VL_INPUT_JOYSTICK_DETACH = 41,   /* - */
  VL_INPUT_JOYSTICK_AXIS = 42,     /* x: axis, y: position, -65535 to 65535 */
  VL_INPUT_JOYSTICK_ROTATION = 43, /* x: rotation axis, y: as above */
  VL_INPUT_JOYSTICK_BUTTON = 44,   /* x: button, down: 1 or 0 */
  VL_INPUT_JOYSTICK_HAT = 45,      /* x: hat, y: hundredths of a degree clockwise from forward, -1 in the centre */
  /* What the desktop did with the window. */
  VL_INPUT_MINIMIZE = 20,
  VL_INPUT_MAXIMIZE = 21,
  VL_INPUT_RESTORE = 22,
  VL_INPUT_MOVE = 23,   /* x, y: new client position on the screen */
  VL_INPUT_DISPLAY = 24 /* x, y: new size of the screen, code: its depth in bits */
} vl_input_type;

typedef struct vl_input_event {
  int32_t type; /* vl_input_type */
  int32_t code, down, x, y;
  int32_t mods;     /* 1 shift, 2 control, 4 alt */
  const char* text; /* VL_INPUT_JOYSTICK_ATTACH; copied. NULL otherwise */
} vl_input_event;

/* Fills in the defaults. */
VL_API void vl_options_init(vl_options* options);

/* NULL on failure; then `error` (of error_size bytes, may be NULL) tells why in one line. */
VL_API vl_player* vl_create(const vl_options* options, char* error, size_t error_size);
/* Stops a run first. NULL is allowed. */
VL_API void vl_destroy(vl_player* player);

/* The application: a file, whose folder then is the tree in which external parts and banks are found, or bytes
 * in memory with a name; vl_add_file puts further files beside the latter. They are copied. 0 on failure. */
VL_API int vl_set_file(vl_player* player, const char* path);
VL_API int vl_set_bytes(vl_player* player, const char* name, const void* bytes, size_t size);
/* An address: file, http, https or ftp, or a path; a relative one counts from document_url, which may be NULL. It is
 * fetched at each vl_run, on the caller's thread. Statuses of 400 and above are failures. The parameters "Src" and
 * "URLVLPSource" set it too, when no other application is set. */
VL_API int vl_set_url(vl_player* player, const char* url, const char* document_url);
VL_API int vl_add_file(vl_player* player, const char* name, const void* bytes, size_t size);
/* A parameter as the page would give it; later ones of the same name count after earlier ones. */
VL_API int vl_set_parameter(vl_player* player, const char* name, const char* value);
VL_API int vl_set_command_line(vl_player* player, const char* text);
/* Hosts that the program may reach besides this machine and the one it came from; others can't be told from hosts that
 * don't answer. "HOST:PORT", "HOST:*" or "all"; 0 for another text. Before vl_run. */
VL_API int vl_allow_net(vl_player* player, const char* rule);
/* The host that the application came from, a name or an address: allowed on all ports. Before vl_run. */
VL_API int vl_set_origin(vl_player* player, const char* host);
/* Parameters and command line are forgotten, for another application. */
VL_API void vl_clear_parameters(vl_player* player);
/* Of the host's window, UTF-8. */
VL_API void vl_set_title(vl_player* player, const char* title);

/* A folder, UTF-8, that keeps the files which the program makes; it then may make any. NULL: they go with the run, and
 * the program reaches only those that the run made for it. It is made when it isn't there. Before vl_run. */
VL_API void vl_set_saves_folder(vl_player* player, const char* path);
/* A folder, UTF-8, for the documents that the program prints, one PDF file each. NULL: there is no printer. Before
 * vl_run. */
VL_API void vl_set_print_folder(vl_player* player, const char* path);
/* A print queue of CUPS instead, UTF-8; "default" is the user's default queue. NULL: none. Before vl_run. */
VL_API void vl_set_print_queue(vl_player* player, const char* queue);

/* Recorded input, in ms of the program's clock. Headless players with a virtual clock only; before vl_run. */
VL_API int vl_script_input(vl_player* player, uint64_t at_ms, const vl_input_event* event);

/* The input that the last run took, in order, with its time on the program's clock: what vl_script_input takes
 * to play it again. Its text lives until the next run. 0 past the end. */
VL_API int vl_recorded_input(const vl_player* player, size_t index, uint64_t* at_ms, vl_input_event* event);

/* Starts the run. 0 when one is going on, or no application is set. */
VL_API int vl_run(vl_player* player);
/* Waits up to timeout_ms (-1: for ever) for the end of the run, serving the desktop window meanwhile. */
VL_API vl_state vl_wait(vl_player* player, int timeout_ms);
/* Ends the run in order and waits for it. The program may be busy: it ends at its next statement. */
VL_API void vl_stop(vl_player* player);

/* Of the last run. */
VL_API vl_result vl_get_result(const vl_player* player);
/* Title and text of the error box: "TITLE: TEXT"; "" without an error. */
VL_API const char* vl_error(const vl_player* player);
/* What helps the author: "source:line:column: explanation"; "" when there is nothing to add. */
VL_API const char* vl_error_detail(const vl_player* player);
/* The program's global variables at its end, as a JSON object; "" unless keep_globals is set. */
VL_API const char* vl_globals(const vl_player* player);

/* Holds a run between two of its ticks; the time meanwhile doesn't pass for it. A step pauses, and lets the run go on
 * until it shows a picture, for 50 ms at most. Nothing happens with a virtual clock. */
VL_API void vl_set_paused(vl_player* player, int paused);
VL_API int vl_is_paused(const vl_player* player);
VL_API void vl_step(vl_player* player);

/* What a person does by the shell's keys and menu. */
typedef enum vl_action {
  VL_ACTION_NONE = 0,
  VL_ACTION_MENU = 1,
  VL_ACTION_FULL_SCREEN = 2,
  VL_ACTION_SCALING = 3,
  VL_ACTION_PAUSE = 4,
  VL_ACTION_STEP = 5,
  VL_ACTION_SCREENSHOT = 6,
  VL_ACTION_RELOAD = 7,
  VL_ACTION_OPEN = 8, /* another application: from the menu, or dropped on a window */
  VL_ACTION_QUIT = 9
} vl_action;

/* The next thing that a person asked for and that the caller must do: VL_ACTION_SCREENSHOT to QUIT; NONE when there is
 * nothing. `text` gets the path for VL_ACTION_OPEN, UTF-8. Ask after each vl_wait(). */
VL_API vl_action vl_take_request(vl_player* player, const char** text);
/* Another key for an action: virtual key and mods as in vl_input_event; code 0 takes the key away. */
VL_API int vl_set_shell_key(vl_player* player, vl_action action, int32_t code, int32_t mods);
/* Applications for the menu, UTF-8, the newest first; nine are shown. */
VL_API void vl_set_recent(vl_player* player, const char* const* paths, size_t count);
/* A line over the picture for two seconds, UTF-8. */
VL_API void vl_show_note(vl_player* player, const char* text);
/* What a person may have changed. */
VL_API vl_scaling vl_get_scaling(const vl_player* player);
VL_API int vl_is_full_screen(const vl_player* player);

/* Called for each picture that the program shows in the window of vl_frame, on the thread of the run, with the time of
 * its clock. The pixels are valid during the call. Before vl_run; a null function ends it. */
typedef void (*vl_frame_function)(void* user, uint64_t at_ms, const uint32_t* pixels, int32_t width, int32_t height);
VL_API void vl_on_frame(vl_player* player, vl_frame_function function, void* user);

/* Input for a running player of the embed back end. */
VL_API int vl_send_input(vl_player* player, const vl_input_event* event);

/* Copies the newest picture of the host's window (or of the topmost window of a detached run): words
 * 0x00RRGGBB, line after line. Gives its size; copies only when `capacity` words suffice. 0 when there is none.
 * During and after a run. */
VL_API int vl_frame(vl_player* player, uint32_t* pixels, size_t capacity, int32_t* width, int32_t* height);

#ifdef __cplusplus
}
#endif

#endif
