# Source collection: every .cpp below src/<family>/ for the chosen families.
# A file whose name ends in _sse2, _ssse3, _sse41 or _avx2 holds SIMD kernels
# and alone gets that target flag; on a portable build such files are left out.
set(KIVVC_SIMD_SUFFIXES sse2 ssse3 sse41 avx2)
set(KIVVC_FLAGS_sse2 -msse2)
set(KIVVC_FLAGS_ssse3 -mssse3)
set(KIVVC_FLAGS_sse41 -msse4.1)
set(KIVVC_FLAGS_avx2 -mavx2)

function(kivvc_collect_sources out root families)
  set(result)
  foreach(fam IN LISTS families)
    file(GLOB files CONFIGURE_DEPENDS ${PROJECT_SOURCE_DIR}/${root}/${fam}/*.cpp)
    foreach(f IN LISTS files)
      set(keep ON)
      foreach(s IN LISTS KIVVC_SIMD_SUFFIXES)
        if(f MATCHES "_${s}\\.cpp$")
          if(KIVVC_X86)
            set_source_files_properties(${f} PROPERTIES COMPILE_OPTIONS "${KIVVC_FLAGS_${s}}")
          else()
            set(keep OFF)
          endif()
        endif()
      endforeach()
      # The scalar references stay scalar on x86 builds, so that the speed
      # table measures the hand-written kernels against plain code.
      if(KIVVC_X86 AND f MATCHES "_ref\\.cpp$")
        set_source_files_properties(${f} PROPERTIES COMPILE_OPTIONS "-fno-tree-vectorize")
      endif()
      if(keep)
        list(APPEND result ${f})
      endif()
    endforeach()
  endforeach()
  set(${out} ${result} PARENT_SCOPE)
endfunction()

# Files matching `pattern` in <root>/<family>/ for each family (kernel cases
# *_cases.cpp, tests *_test.cpp, fuzz targets *_fuzz.cpp).
function(kivvc_glob_families out root families pattern)
  set(result)
  foreach(fam IN LISTS families)
    file(GLOB files CONFIGURE_DEPENDS ${root}/${fam}/${pattern})
    list(APPEND result ${files})
  endforeach()
  set(${out} ${result} PARENT_SCOPE)
endfunction()
