#!/bin/bash
# tools/wasm/wasm-sysroot.sh PREFIX [WORK]
# Makes PREFIX a wasm32-wasi sysroot: libc++, libc++abi and the unwinder with exceptions, setjmp, zlib, libpng,
# libjpeg and FreeType, all from Debian's packages and their sources. One to two minutes on two cores, once: a PREFIX
# whose stamp fits is left alone.
set -euo pipefail
here=$(cd "$(dirname "$0")" && pwd)
P=$(realpath -m "${1:?PREFIX}"); W=$(realpath -m "${2:-build-wasm-sysroot}"); STAMP="llvm19-eh-v1"
if [ "$(cat "$P/.stamp" 2>/dev/null)" = "$STAMP" ] && command -v clang++-19 >/dev/null; then exit 0; fi
"$here/../setup" wasm
rm -rf "$W" "$P"; mkdir -p "$W/apt/lists/partial" "$W/mods/Platform" "$W/srcmods/Platform" "$P/lib" "$P/include"; cd "$W"
# private apt configuration for source packages: the machine's own sources stay as they are
cat > apt/src.sources <<S
Types: deb-src
URIs: $(apt-get indextargets --format '$(SITE)' | grep -m1 /debian$ || apt-get indextargets --format '$(SITE)' | head -1)
Suites: bookworm
Components: main
Signed-By: /usr/share/keyrings/debian-archive-keyring.gpg
S
AP="-o Dir::Etc::sourcelist=/dev/null -o Dir::Etc::sourceparts=$W/apt -o Dir::State::lists=$W/apt/lists -o APT::Sandbox::User=root"
apt-get $AP -qq update
apt-get $AP -qq source --download-only llvm-toolchain-19 zlib libpng1.6 libjpeg-turbo freetype
for d in zlib libpng1.6 libjpeg-turbo freetype; do dpkg-source --no-check -x ${d}_*.dsc $d >/dev/null; done      # with Debian's security patches
mkdir llvm && tar xf llvm-toolchain-19_*.orig.tar.xz -C llvm --strip-components=1 --wildcards --exclude='*/test/*' '*/libcxx/*' '*/libcxxabi/*' '*/libunwind/*' '*/runtimes/*' '*/cmake/*' '*/llvm/utils/llvm-lit/*'
L=$W/llvm
T="--target=wasm32-wasi"; EH="-fwasm-exceptions -D__USING_WASM_EXCEPTIONS__ -I$L/libunwind/include"
cat > wasi.cmake <<C
list(APPEND CMAKE_MODULE_PATH $W/mods)
set(CMAKE_SYSTEM_NAME WASI)
set(CMAKE_SYSTEM_PROCESSOR wasm32)
set(CMAKE_C_COMPILER /usr/bin/clang-19)
set(CMAKE_CXX_COMPILER /usr/bin/clang++-19)
set(CMAKE_C_COMPILER_TARGET wasm32-wasi)
set(CMAKE_CXX_COMPILER_TARGET wasm32-wasi)
set(CMAKE_AR /usr/lib/llvm-19/bin/llvm-ar)
set(CMAKE_RANLIB /usr/lib/llvm-19/bin/llvm-ranlib)
set(CMAKE_C_COMPILER_WORKS 1)
set(CMAKE_CXX_COMPILER_WORKS 1)
set(CMAKE_FIND_ROOT_PATH_MODE_PROGRAM NEVER)
C
echo 'set(WASI 1)' > mods/Platform/WASI.cmake
# 1. C++ runtime with exceptions
cmake -G Ninja -S $L/runtimes -B b-cxx -DCMAKE_TOOLCHAIN_FILE=$W/wasi.cmake -DCMAKE_BUILD_TYPE=Release -DUNIX=1 -DLLVM_ENABLE_RUNTIMES="libcxxabi;libcxx" -DCMAKE_C_FLAGS="$EH" -DCMAKE_CXX_FLAGS="$EH" \
 -DLLVM_INCLUDE_TESTS=OFF -DLLVM_INCLUDE_DOCS=OFF -DLIBCXX_ENABLE_EXCEPTIONS=ON -DLIBCXXABI_ENABLE_EXCEPTIONS=ON -DLIBCXXABI_USE_LLVM_UNWINDER=OFF -DLIBCXX_ENABLE_THREADS=OFF -DLIBCXXABI_ENABLE_THREADS=OFF -DLIBCXX_HAS_MUSL_LIBC=ON -DLIBCXX_ENABLE_SHARED=OFF -DLIBCXXABI_ENABLE_SHARED=OFF -DLIBCXX_ENABLE_FILESYSTEM=OFF -DLIBCXX_INCLUDE_BENCHMARKS=OFF -DLIBCXX_INCLUDE_TESTS=OFF -DLIBCXXABI_INCLUDE_TESTS=OFF -DLIBCXX_CXX_ABI=libcxxabi -DLIBCXX_ENABLE_TIME_ZONE_DATABASE=OFF -DLIBCXXABI_SILENT_TERMINATE=ON -DLIBCXX_ABI_VERSION=2 -DLIBCXX_INSTALL_MODULES=OFF -DLLVM_ENABLE_PER_TARGET_RUNTIME_DIR=OFF -DCMAKE_INSTALL_PREFIX=$P > cxx.log 2>&1
ninja -C b-cxx cxx cxxabi cxx_experimental >> cxx.log 2>&1; cmake --install b-cxx >> cxx.log 2>&1
CC="clang-19 $T -O2"
$CC -DNDEBUG $EH -D_LIBUNWIND_HIDE_SYMBOLS -D_LIBUNWIND_HAS_NO_THREADS -c $L/libunwind/src/Unwind-wasm.c -o unwind.o
# 2. setjmp (wasi-libc of Debian 12 has none) and two symbols that Debian's wasm compiler-rt wants
cat > $P/include/setjmp.h <<'H'
#ifndef VL_SETJMP_H
#define VL_SETJMP_H
#ifdef __cplusplus
extern "C" {
#endif
typedef struct { unsigned long b[8]; } jmp_buf[1];
int setjmp(jmp_buf) __attribute__((returns_twice));
void longjmp(jmp_buf, int) __attribute__((noreturn));
#define setjmp(e) (setjmp(e))
#ifdef __cplusplus
}
#endif
#endif
H
cat > rt.c <<'R'
#include <stdint.h>
struct jb { void* id; uint32_t label; struct { void* env; int val; } arg; };
void __wasm_setjmp(void* env, uint32_t label, void* id) { struct jb* j = env; if (!label || !id) __builtin_trap(); j->id = id; j->label = label; }
uint32_t __wasm_setjmp_test(void* env, void* id) { struct jb* j = env; if (!j->label || !id) __builtin_trap(); return j->id == id ? j->label : 0; }
void __wasm_longjmp(void* env, int val) { struct jb* j = env; j->arg.env = env; j->arg.val = val ? val : 1; __builtin_wasm_throw(1, &j->arg); }
uintptr_t __stack_chk_guard = 0x5bd1e995; void __stack_chk_fail(void) { __builtin_trap(); }
R
SJ="-fwasm-exceptions -mllvm -wasm-enable-sjlj -isystem $P/include -w"
$CC $SJ -c rt.c -o rt.o; llvm-ar-19 rcs $P/lib/libvlrt.a rt.o unwind.o
# 3. the four libraries
( cd zlib;      for f in adler32 crc32 deflate infback inffast inflate inftrees trees zutil compress uncompr; do $CC $SJ -c $f.c & [ $(jobs -r|wc -l) -ge 2 ] && wait -n; done; wait; llvm-ar-19 rcs $P/lib/libz.a *.o; cp zlib.h zconf.h $P/include )
( cd libpng1.6; cp scripts/pnglibconf.h.prebuilt pnglibconf.h; for f in png pngerror pngget pngmem pngpread pngread pngrio pngrtran pngrutil pngset pngtrans pngwio pngwrite pngwtran pngwutil; do $CC $SJ -c $f.c & [ $(jobs -r|wc -l) -ge 2 ] && wait -n; done; wait; llvm-ar-19 rcs $P/lib/libpng.a png*.o; cp png.h pngconf.h pnglibconf.h $P/include )
cmake -G Ninja -S libjpeg-turbo -B b-jpg -DCMAKE_TOOLCHAIN_FILE=$W/wasi.cmake -DCMAKE_BUILD_TYPE=Release -DCMAKE_C_FLAGS="$SJ" -DHAVE_SIZE_T=1 -DSIZE_T=4 -DHAVE_UNSIGNED_LONG=1 -DUNSIGNED_LONG=4 -DWITH_SIMD=0 -DWITH_TURBOJPEG=0 -DENABLE_SHARED=0 > jpg.log 2>&1
ninja -C b-jpg jpeg-static >> jpg.log 2>&1; cp b-jpg/libjpeg.a $P/lib; cp libjpeg-turbo/{jpeglib,jmorecfg,jerror}.h b-jpg/jconfig.h $P/include
cmake -G Ninja -S freetype -B b-ft -DCMAKE_TOOLCHAIN_FILE=$W/wasi.cmake -DCMAKE_BUILD_TYPE=Release -DCMAKE_C_FLAGS="$SJ" -DFT_DISABLE_HARFBUZZ=ON -DFT_DISABLE_BROTLI=ON -DFT_DISABLE_BZIP2=ON -DFT_DISABLE_PNG=ON -DFT_REQUIRE_ZLIB=ON -DZLIB_INCLUDE_DIR=$P/include -DZLIB_LIBRARY=$P/lib/libz.a -DCMAKE_INSTALL_PREFIX=$P > ft.log 2>&1
ninja -C b-ft install >> ft.log 2>&1
cd /; rm -rf "$W"
echo "$STAMP" > "$P/.stamp"
