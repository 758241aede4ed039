# Compiler settings shared by every target of ours, and the two ways a target is made.

add_library(skyvault_options INTERFACE)
target_include_directories(skyvault_options INTERFACE ${CMAKE_SOURCE_DIR})
if(MSVC)
  target_compile_options(skyvault_options INTERFACE /W4 /WX /utf-8 /fp:precise /permissive- /EHsc)
  target_compile_definitions(skyvault_options INTERFACE UNICODE _UNICODE NOMINMAX WIN32_LEAN_AND_MEAN)
else()
  # No -ffast-math: results are the same bits for every compiler and instruction set.
  target_compile_options(skyvault_options INTERFACE
    -Wall -Wextra -Wpedantic -Wconversion -Wno-sign-conversion -Werror
    -fno-math-errno -fno-trapping-math -ffp-contract=off -march=x86-64-v2)
  if(WIN32)
    target_compile_definitions(skyvault_options INTERFACE
      UNICODE _UNICODE NOMINMAX WIN32_LEAN_AND_MEAN WINVER=0x0A00 _WIN32_WINNT=0x0A00 NTDDI_VERSION=0x0A000006)
    target_compile_options(skyvault_options INTERFACE -Wa,-muse-unaligned-vector-move)
    target_link_options(skyvault_options INTERFACE -static)
  endif()
  if(SKYVAULT_SANITIZE)
    target_compile_options(skyvault_options INTERFACE
      -fsanitize=address,undefined -fno-sanitize-recover=all -fno-omit-frame-pointer -D_GLIBCXX_ASSERTIONS)
    target_link_options(skyvault_options INTERFACE -fsanitize=address,undefined)
  endif()
  if(SKYVAULT_SANITIZE_THREADS)
    target_compile_options(skyvault_options INTERFACE -fsanitize=thread)
    target_link_options(skyvault_options INTERFACE -fsanitize=thread)
  endif()
  if(SKYVAULT_FUZZ)
    # The libraries tell the fuzzer which of their branches an input reached.
    target_compile_options(skyvault_options INTERFACE -fsanitize=fuzzer-no-link)
    target_link_options(skyvault_options INTERFACE -fsanitize=fuzzer-no-link)
  endif()
endif()
# -O3 in release builds: the row kernels rely on the vectoriser. The sanitized build keeps its asserts; -O1 -g1,
# with file and line in its reports, compiles in half the time of -O2 -g.
if(NOT MSVC)
  set(CMAKE_CXX_FLAGS_RELEASE "-O3 -DNDEBUG")
  set(CMAKE_CXX_FLAGS_RELWITHDEBINFO "-O1 -g1")
endif()

# skyvault_sources(VARIABLE folder): the .cpp files of a folder that belong to this system.
function(skyvault_sources variable folder)
  file(GLOB files CONFIGURE_DEPENDS ${CMAKE_SOURCE_DIR}/${folder}/*.cpp)
  if(WIN32)
    list(FILTER files EXCLUDE REGEX "_posix[^/]*\\.cpp$")
  else()
    list(FILTER files EXCLUDE REGEX "_win[^/]*\\.cpp$")
  endif()
  if(directxtex_FOUND)
    list(FILTER files EXCLUDE REGEX "_builtin[^/]*\\.cpp$")
  else()
    list(FILTER files EXCLUDE REGEX "_directxtex[^/]*\\.cpp$")
  endif()
  set(${variable} ${files} PARENT_SCOPE)
endfunction()

# skyvault_library(folder dependencies...): the static library skyvault_<folder>.
function(skyvault_library folder)
  skyvault_sources(files ${folder})
  add_library(skyvault_${folder} STATIC ${files})
  target_link_libraries(skyvault_${folder} PUBLIC skyvault_options)
  foreach(dependency ${ARGN})
    target_link_libraries(skyvault_${folder} PUBLIC skyvault_${dependency})
  endforeach()
endfunction()

# skyvault_row_kernels(target files...): the files are compiled as part of the target for the baseline
# instruction set (by the folder's own glob) and once more for AVX2 with FMA (never contracted, only where the
# source asks for it); the program chooses at run time (projection/kernel_choice.h).
function(skyvault_row_kernels target)
  add_library(${target}_avx2 OBJECT ${ARGN})
  target_link_libraries(${target}_avx2 PRIVATE skyvault_options)
  target_compile_definitions(${target}_avx2 PRIVATE SKYVAULT_KERNELS_AVX2)
  if(MSVC)
    target_compile_options(${target}_avx2 PRIVATE /arch:AVX2)
  else()
    target_compile_options(${target}_avx2 PRIVATE -mavx2 -mfma)
  endif()
  target_sources(${target} PRIVATE $<TARGET_OBJECTS:${target}_avx2>)
endfunction()
