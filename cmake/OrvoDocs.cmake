# The target docs: guide and reference as HTML in docs/html of the build tree.
# It is never part of a plain build, and only asks for Doxygen when it is built.
if(PROJECT_IS_TOP_LEVEL)
  configure_file(docs/Doxyfile.in docs/Doxyfile @ONLY)
  add_custom_target(docs
    COMMAND ${CMAKE_COMMAND} -E rm -rf docs/html
    COMMAND doxygen docs/Doxyfile
    # The pages of the search load no other style sheet.
    COMMAND ${CMAKE_COMMAND} -E copy ${PROJECT_SOURCE_DIR}/docs/search.css docs/html/search/search.css
    WORKING_DIRECTORY ${PROJECT_BINARY_DIR}
    VERBATIM)
endif()
