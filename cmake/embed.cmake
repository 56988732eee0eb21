# Makes a header of a text that a program carries with it, such as a style sheet. Comments of the
# text stay behind.

function(utm_embed_text text_file constant header)
  set_property(DIRECTORY APPEND PROPERTY CMAKE_CONFIGURE_DEPENDS ${text_file})
  file(READ ${text_file} text)
  string(REGEX REPLACE "/\\*[^*]*\\*/\n?" "" text "${text}")
  file(CONFIGURE OUTPUT ${header} @ONLY
       CONTENT "#pragma once\n\ninline constexpr char @constant@[] = R\"(\n@text@)\";\n")
endfunction()
