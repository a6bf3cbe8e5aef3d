# The exported surface, made from the one description frame/families.txt at
# configure time (plain CMake: an i386 build needs no host tool for it).
#
# tqf_read_families(<file>) sets, for the directory and its subdirectories:
#   TQF_FAMILIES                        family ids in file order
#   TQF_FAMILY_<id>_STEMS              name stems
#   TQF_FAMILY_<id>_PRECISIONS         type suffixes (may be empty)
#   TQF_FAMILY_<id>_FIRST, _LAST       size range (empty: no fixed kernels)
#   TQF_FAMILY_<id>_ENTRY              dft | wht (sized families)
#   TQF_FAMILY_<id>_KERNELS            generated | hand
#   TQF_FAMILY_<id>_PROSE              a line for the header
# tqf_write_surface(<dir>) writes the generated surface files into <dir>.

# Entry signatures of sized families: the size argument's name and what the
# fixed kernel takes after (src, dst, flag).
set(TQF_ENTRY_dft_SIZE_ARG length)
set(TQF_ENTRY_dft_EXTRA_PARAMS "")
set(TQF_ENTRY_dft_EXTRA_TYPES "")
set(TQF_ENTRY_dft_EXTRA_ARGS "")
set(TQF_ENTRY_dft_KIND SrcDstFlag)
set(TQF_ENTRY_wht_SIZE_ARG order)
set(TQF_ENTRY_wht_EXTRA_PARAMS ", unsigned char* buffer")
set(TQF_ENTRY_wht_EXTRA_TYPES ", unsigned char*")
set(TQF_ENTRY_wht_EXTRA_ARGS ", buffer")
set(TQF_ENTRY_wht_KIND SrcDstFlagBuffer)

macro(tqf_read_families file)
  set_property(DIRECTORY APPEND PROPERTY CMAKE_CONFIGURE_DEPENDS ${file})
  file(STRINGS ${file} _tqf_lines)
  set(TQF_FAMILIES "")
  foreach(_line IN LISTS _tqf_lines)
    if(_line MATCHES "^[ \t]*(#|$)")
      continue()
    endif()
    set(_w "([^ \t]+)[ \t]+")
    if(NOT _line MATCHES "^${_w}${_w}${_w}${_w}${_w}([^ \t]+)[ \t]*(.*)$")
      message(FATAL_ERROR "${file}: cannot read the line\n  ${_line}")
    endif()
    set(_id ${CMAKE_MATCH_1})
    list(APPEND TQF_FAMILIES ${_id})
    string(REPLACE "," ";" TQF_FAMILY_${_id}_STEMS "${CMAKE_MATCH_2}")
    set(TQF_FAMILY_${_id}_PRECISIONS "")
    if(NOT CMAKE_MATCH_3 STREQUAL "-")
      string(REPLACE "," ";" TQF_FAMILY_${_id}_PRECISIONS "${CMAKE_MATCH_3}")
    endif()
    set(TQF_FAMILY_${_id}_FIRST "")
    set(TQF_FAMILY_${_id}_LAST "")
    set(_sizes "${CMAKE_MATCH_4}")
    set(TQF_FAMILY_${_id}_ENTRY "${CMAKE_MATCH_5}")
    set(TQF_FAMILY_${_id}_KERNELS "${CMAKE_MATCH_6}")
    set(TQF_FAMILY_${_id}_PROSE "${CMAKE_MATCH_7}")
    if(NOT _sizes STREQUAL "-")
      if(NOT _sizes MATCHES "^([0-9]+)\\.\\.([0-9]+)$")
        message(FATAL_ERROR "${file}: family ${_id}: sizes must be first..last, not ${_sizes}")
      endif()
      set(TQF_FAMILY_${_id}_FIRST ${CMAKE_MATCH_1})
      set(TQF_FAMILY_${_id}_LAST ${CMAKE_MATCH_2})
      if(NOT DEFINED TQF_ENTRY_${TQF_FAMILY_${_id}_ENTRY}_SIZE_ARG)
        message(FATAL_ERROR "${file}: family ${_id}: unknown entry ${TQF_FAMILY_${_id}_ENTRY}")
      endif()
    endif()
    if(NOT TQF_FAMILY_${_id}_KERNELS MATCHES "^(generated|hand)$")
      message(FATAL_ERROR "${file}: family ${_id}: kernels must be generated or hand")
    endif()
  endforeach()
endmacro()

# Every exported name of a family, fixed kernels first (by size, then precision).
function(tqf_family_names id out)
  set(names "")
  set(precs ${TQF_FAMILY_${id}_PRECISIONS})
  foreach(stem IN LISTS TQF_FAMILY_${id}_STEMS)
    if(NOT TQF_FAMILY_${id}_FIRST STREQUAL "")
      foreach(n RANGE ${TQF_FAMILY_${id}_FIRST} ${TQF_FAMILY_${id}_LAST})
        foreach(p IN LISTS precs)
          list(APPEND names ${stem}_${n}_${p})
        endforeach()
      endforeach()
    endif()
    if(precs)
      foreach(p IN LISTS precs)
        list(APPEND names ${stem}_${p})
      endforeach()
    else()
      list(APPEND names ${stem})
    endif()
  endforeach()
  set(${out} ${names} PARENT_SCOPE)
endfunction()

# The generator's kernel specs (family:precision:size) and the sources they make.
function(tqf_generated_kernels dir specs_out sources_out)
  set(specs "")
  set(sources "")
  foreach(id IN LISTS TQF_FAMILIES)
    if(NOT TQF_FAMILY_${id}_KERNELS STREQUAL "generated")
      continue()
    endif()
    foreach(p IN LISTS TQF_FAMILY_${id}_PRECISIONS)
      foreach(n RANGE ${TQF_FAMILY_${id}_FIRST} ${TQF_FAMILY_${id}_LAST})
        list(APPEND specs ${id}:${p}:${n})
        list(APPEND sources ${dir}/${id}_${p}_${n}.cpp)
      endforeach()
    endforeach()
  endforeach()
  set(${specs_out} ${specs} PARENT_SCOPE)
  set(${sources_out} ${sources} PARENT_SCOPE)
endfunction()

# Writes only when the text changes, so that a re-configure rebuilds nothing.
function(tqf_write_if_changed path text)
  file(WRITE ${path}.new "${text}")
  configure_file(${path}.new ${path} COPYONLY)
  file(REMOVE ${path}.new)
endfunction()

set(_tqf_banner "generated from frame/families.txt by cmake/tqf_surface.cmake; do not edit")

# The linker's version script: exactly the described names are global.
function(tqf_write_version_script path)
  set(body "")
  foreach(id IN LISTS TQF_FAMILIES)
    tqf_family_names(${id} names)
    foreach(name IN LISTS names)
      string(APPEND body "    ${name};\n")
    endforeach()
  endforeach()
  tqf_write_if_changed(${path} "/* ${_tqf_banner} */\n{\n  global:\n${body}  local:\n    *;\n};\n")
endfunction()

# Declarations of the sized families, fixed kernels and generic entries, for
# the public header to include inside its extern "C" block.
function(tqf_write_declarations path)
  set(t "/* Kernel declarations, ${_tqf_banner}.\n * Included by tqfgen.h after its types; not a header of its own. */\n")
  foreach(id IN LISTS TQF_FAMILIES)
    if(TQF_FAMILY_${id}_FIRST STREQUAL "")
      continue()
    endif()
    set(e ${TQF_FAMILY_${id}_ENTRY})
    set(first ${TQF_FAMILY_${id}_FIRST})
    set(last ${TQF_FAMILY_${id}_LAST})
    set(arg ${TQF_ENTRY_${e}_SIZE_ARG})
    set(extra "${TQF_ENTRY_${e}_EXTRA_PARAMS}")
    string(REPLACE ", " "" extra_name "${extra}")
    string(REGEX REPLACE ".* " "" extra_name "${extra_name}")
    if(extra_name STREQUAL "")
      set(fixed_args "(src, dst, flag)")
      set(generic_args "(src, dst, ${arg}, flag)")
    else()
      set(fixed_args "(src, dst, flag, ${extra_name})")
      set(generic_args "(src, dst, ${arg}, flag, ${extra_name})")
    endif()
    string(APPEND t "\n/* ---- ${TQF_FAMILY_${id}_PROSE}.\n"
                    " * Fixed ${arg}s ${first}..${last}: ${fixed_args}. */\n")
    foreach(stem IN LISTS TQF_FAMILY_${id}_STEMS)
      foreach(n RANGE ${first} ${last})
        foreach(p IN LISTS TQF_FAMILY_${id}_PRECISIONS)
          string(APPEND t "TQFAPI tqfStatus ${stem}_${n}_${p}(const tqf${p}* src, tqf${p}* dst, int flag${extra});\n")
        endforeach()
      endforeach()
      string(APPEND t "/* ${generic_args}: tqfStsBadSize when ${arg} is outside ${first}..${last}, tested\n"
                      " * before anything else; otherwise exactly the call of the fixed kernel. */\n")
      foreach(p IN LISTS TQF_FAMILY_${id}_PRECISIONS)
        string(APPEND t "TQFAPI tqfStatus ${stem}_${p}(const tqf${p}* src, tqf${p}* dst, int ${arg}, int flag${extra});\n")
      endforeach()
    endforeach()
  endforeach()
  tqf_write_if_changed(${path} "${t}")
endfunction()

# Generic entries of the sized families: one unsigned range test of the size,
# first and alone, then a dense table of the fixed kernels forwards the call,
# so that dispatch costs the same at every size.
function(tqf_write_dispatch path)
  set(tables "")
  set(entries "")
  foreach(id IN LISTS TQF_FAMILIES)
    if(TQF_FAMILY_${id}_FIRST STREQUAL "")
      continue()
    endif()
    set(e ${TQF_FAMILY_${id}_ENTRY})
    set(first ${TQF_FAMILY_${id}_FIRST})
    set(last ${TQF_FAMILY_${id}_LAST})
    math(EXPR count "${last} - ${first} + 1")
    math(EXPR span "${last} - ${first}")
    set(arg ${TQF_ENTRY_${e}_SIZE_ARG})
    foreach(stem IN LISTS TQF_FAMILY_${id}_STEMS)
      foreach(p IN LISTS TQF_FAMILY_${id}_PRECISIONS)
        set(table "k_${stem}_${p}")
        string(APPEND tables "tqfStatus (*const ${table}[${count}])(const tqf${p}*, tqf${p}*, int${TQF_ENTRY_${e}_EXTRA_TYPES}) = {\n")
        foreach(n RANGE ${first} ${last})
          string(APPEND tables "    ${stem}_${n}_${p},\n")
        endforeach()
        string(APPEND tables "};\n")
        string(APPEND entries
          "TQFAPI tqfStatus ${stem}_${p}(const tqf${p}* src, tqf${p}* dst, int ${arg}, int flag${TQF_ENTRY_${e}_EXTRA_PARAMS}) {\n"
          "    const uint32_t slot = static_cast<uint32_t>(${arg}) - ${first}u;  // below ${first} wraps to large values\n"
          "    if (slot > ${span}u) return tqfStsBadSize;\n"
          "    return ${table}[slot](src, dst, flag${TQF_ENTRY_${e}_EXTRA_ARGS});\n"
          "}\n")
      endforeach()
    endforeach()
  endforeach()
  string(CONCAT text
    "// Generic entries, ${_tqf_banner}.\n"
    "// The size is the only thing looked at here: one unsigned range test, before\n"
    "// the pointers and the flag; then a dense table of the fixed kernels forwards\n"
    "// the call, so that dispatch costs the same at every size.\n"
    "#include <stdint.h>\n\n#include \"tqfgen.h\"\n\nnamespace {\n\n${tables}\n}  // namespace\n\n"
    "extern \"C\" {\n\n${entries}\n}  // extern \"C\"\n")
  tqf_write_if_changed(${path} "${text}")
endfunction()

# The tests' table: per family and precision the fixed kernels as
# {size, name, function}, the generic entry, every fixed kernel of every
# family in one type-erased list with its entry kind, and every generic entry
# in another with its size range.
function(tqf_write_test_table path)
  set(typed "")
  set(all "")
  set(generics "")
  foreach(id IN LISTS TQF_FAMILIES)
    if(TQF_FAMILY_${id}_FIRST STREQUAL "")
      continue()
    endif()
    set(e ${TQF_FAMILY_${id}_ENTRY})
    set(kind ${TQF_ENTRY_${e}_KIND})
    foreach(stem IN LISTS TQF_FAMILY_${id}_STEMS)
      foreach(p IN LISTS TQF_FAMILY_${id}_PRECISIONS)
        string(APPEND typed "// ${TQF_FAMILY_${id}_PROSE}\n"
                            "inline const Fixed<${kind}Fn<tqf${p}>> ${id}_${p}[] = {\n")
        foreach(n RANGE ${TQF_FAMILY_${id}_FIRST} ${TQF_FAMILY_${id}_LAST})
          string(APPEND typed "    {${n}, \"${stem}_${n}_${p}\", ${stem}_${n}_${p}},\n")
          string(APPEND all "    {\"${id}\", \"${p}\", Entry::${kind}, ${n}, \"${stem}_${n}_${p}\",\n"
                            "     reinterpret_cast<void (*)()>(${stem}_${n}_${p})},\n")
        endforeach()
        string(APPEND typed "};\ninline const Generic<${kind}GenericFn<tqf${p}>> ${id}_${p}_generic = "
                            "{\"${stem}_${p}\", ${stem}_${p}};\n\n")
        string(APPEND generics "    {\"${id}\", \"${p}\", Entry::${kind}, ${TQF_FAMILY_${id}_FIRST}, "
                               "${TQF_FAMILY_${id}_LAST}, \"${stem}_${p}\",\n"
                               "     reinterpret_cast<void (*)()>(${stem}_${p})},\n")
      endforeach()
    endforeach()
  endforeach()
  string(CONCAT text
    "// The exported kernels for tests, ${_tqf_banner}.\n"
    "#pragma once\n\n#include \"tqfgen.h\"\n\nnamespace tqftest {\n\n"
    "// Arguments of a fixed kernel: (src, dst, flag) or (src, dst, flag, buffer);\n"
    "// its generic entry takes the size after dst.\n"
    "enum class Entry { SrcDstFlag, SrcDstFlagBuffer };\n\n"
    "template <class T> using SrcDstFlagFn = tqfStatus (*)(const T*, T*, int);\n"
    "template <class T> using SrcDstFlagBufferFn = tqfStatus (*)(const T*, T*, int, unsigned char*);\n"
    "template <class T> using SrcDstFlagGenericFn = tqfStatus (*)(const T*, T*, int, int);\n"
    "template <class T> using SrcDstFlagBufferGenericFn = tqfStatus (*)(const T*, T*, int, int, unsigned char*);\n\n"
    "template <class Fn> struct Fixed {\n    int size;  // length or order\n    const char* name;\n    Fn fn;\n};\n"
    "template <class Fn> struct Generic {\n    const char* name;\n    Fn fn;\n};\n\n"
    "// Per family and precision: table::cfwd_32fc, table::cfwd_32fc_generic, ...\n"
    "namespace table {\n\n${typed}}  // namespace table\n\n"
    "// Every exported fixed-size kernel; call fn through the type its entry kind\n"
    "// and precision give.\n"
    "struct AnyKernel {\n    const char* family;\n    const char* precision;\n    Entry entry;\n"
    "    int size;\n    const char* name;\n    void (*fn)();\n};\n"
    "inline const AnyKernel all_kernels[] = {\n${all}};\n\n"
    "// Every generic entry, with the range of sizes it accepts (first..last);\n"
    "// call fn through the generic type of its entry kind and precision.\n"
    "struct AnyGeneric {\n    const char* family;\n    const char* precision;\n    Entry entry;\n"
    "    int first;\n    int last;\n    const char* name;\n    void (*fn)();\n};\n"
    "inline const AnyGeneric all_generics[] = {\n${generics}};\n\n}  // namespace tqftest\n")
  tqf_write_if_changed(${path} "${text}")
endfunction()

function(tqf_write_surface dir)
  file(MAKE_DIRECTORY ${dir})
  tqf_write_version_script(${dir}/exports.map)
  tqf_write_declarations(${dir}/tqfgen_kernels.h)
  tqf_write_dispatch(${dir}/dispatch.cpp)
  tqf_write_test_table(${dir}/kernel_table.h)
endfunction()
