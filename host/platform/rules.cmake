# Compiles and links all targets by the rules of the platform's build, so the tests run the code that a device gets. Module
# properties are read from the Android.bp files.

# blueprint(VARIABLE MODULE PROPERTY): reads the values of a module's property; empty if the module does not set it.
# The files must be formatted by bpfmt, which a test checks.
function(blueprint variable module property)
  file(GLOB files ${PROJECT_SOURCE_DIR}/Android.bp ${PROJECT_SOURCE_DIR}/*/Android.bp)
  set_property(DIRECTORY ${PROJECT_SOURCE_DIR} APPEND PROPERTY CMAKE_CONFIGURE_DEPENDS ${files})
  foreach(file ${files})
    file(READ ${file} text)
    string(FIND "${text}" "    name: \"${module}\"," begin)
    if(NOT begin EQUAL -1)
      string(SUBSTRING "${text}" ${begin} -1 text)
      string(FIND "${text}" "\n}\n" end)
      string(SUBSTRING "${text}" 0 ${end} text)
      string(REGEX MATCH "\n    ${property}: ([[][^]]*[]]|[^\n]*)," text "${text}")
      string(REGEX MATCHALL "\"[^\"]*\"|true|false" values "${text}")
      list(TRANSFORM values REPLACE "\"" "")
      set(${variable} ${values} PARENT_SCOPE)
      return()
    endif()
  endforeach()
  message(FATAL_ERROR "no Android.bp has a module ${module}")
endfunction()

# Flags that Soong passes for every C++ module unless the module overrides them.
add_compile_options($<$<COMPILE_LANGUAGE:CXX>:-fno-rtti> $<$<COMPILE_LANGUAGE:CXX>:-fno-exceptions>
  -DANDROID -DNDEBUG -UDEBUG -D__ANDROID_UNAVAILABLE_SYMBOLS_ARE_WEAK__
  -faddrsig -ffp-contract=off -fno-strict-aliasing -ffunction-sections -fdata-sections -fno-short-enums -funwind-tables
  $<$<COMPILE_LANGUAGE:CXX>:-fvisibility-inlines-hidden> -Wimplicit-fallthrough -Werror=date-time -Werror=int-conversion
  -Werror=return-type -Werror=non-virtual-dtor -Werror=address -Werror=sequence-point -Werror=format-security)
add_link_options(LINKER:--no-undefined-version,--fatal-warnings,--gc-sections,--hash-style=gnu,-z,relro,-z,now)
if(NOT DOV_SANITIZE)  # sanitizers replace these checks, and the program provides their symbols
  add_compile_options(-fstack-protector-strong -D_FORTIFY_SOURCE=2 -ftrivial-auto-var-init=zero)
  if(CMAKE_CXX_COMPILER_VERSION VERSION_LESS 16)
    add_compile_options(-enable-trivial-auto-var-init-zero-knowing-it-will-be-removed-from-clang)
  endif()
  add_link_options(LINKER:--no-undefined)
endif()

# build_as(TARGET MODULE): builds the target for a vendor image with the RTTI setting, linker options and version script of
# its module.
function(build_as target module)
  target_compile_definitions(${target} PRIVATE __ANDROID_VNDK__ __ANDROID_VENDOR__)
  blueprint(rtti ${module} rtti)
  if(rtti)
    target_compile_options(${target} PRIVATE -frtti)
  endif()
  blueprint(ldflags ${module} ldflags)
  target_link_options(${target} PRIVATE ${ldflags})
  blueprint(script ${module} version_script)
  if(script)
    target_link_options(${target} PRIVATE LINKER:--version-script=${CMAKE_CURRENT_SOURCE_DIR}/${script})
    set_property(TARGET ${target} APPEND PROPERTY LINK_DEPENDS ${CMAKE_CURRENT_SOURCE_DIR}/${script})
  endif()
endfunction()
