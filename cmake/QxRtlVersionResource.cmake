# qx_add_version_resource(target VERSION a.b.c.d)
# Gives a module the version block that gVersion::GetModuleVersion reads back.
function(qx_add_version_resource target)
  cmake_parse_arguments(PARSE_ARGV 1 arg "" "VERSION" "")
endfunction()
