# Keeps faults of other code in a process from being turned against the library:
# its tables of addresses are read-only once it is loaded, its stack frames are
# guarded and its stack holds no code. Users' own targets see nothing of it.
function(orvo_harden target)
  target_compile_options(${target} PRIVATE
    $<$<CXX_COMPILER_ID:GNU,Clang>:-fstack-protector-strong>)
  target_link_options(${target} PRIVATE
    $<$<PLATFORM_ID:Linux,FreeBSD>:LINKER:-z,relro,-z,now,-z,noexecstack>)

  # A build that brings its own choice, as those of distributions do, keeps it.
  if(NOT CMAKE_CXX_FLAGS MATCHES "_FORTIFY_SOURCE")
    # The C library warns of it where nothing is optimised.
    target_compile_options(${target} PRIVATE
      $<$<CONFIG:Release,RelWithDebInfo,MinSizeRel>:-U_FORTIFY_SOURCE;-D_FORTIFY_SOURCE=2>)
    # Fortified, vsnprintf() would be another function, which a program that
    # defines vsnprintf() itself does not reach.
    set_source_files_properties(src/format.cpp PROPERTIES COMPILE_OPTIONS -U_FORTIFY_SOURCE)
  endif()
endfunction()
