# Third-party libraries, as Debian packages them; scripts/install-dependencies.sh installs them.
# Those without a package file are wrapped into imported targets here.
find_package(ZLIB REQUIRED)

find_path(MINISAT_INCLUDE minisat/simp/SimpSolver.h REQUIRED)
find_library(MINISAT_LIBRARY minisat REQUIRED)
add_library(minisat INTERFACE IMPORTED)
target_include_directories(minisat SYSTEM INTERFACE ${MINISAT_INCLUDE})
target_link_libraries(minisat INTERFACE ${MINISAT_LIBRARY})

find_path(RAPIDXML_INCLUDE rapidxml/rapidxml.hpp REQUIRED)
add_library(rapidxml INTERFACE IMPORTED)
target_include_directories(rapidxml SYSTEM INTERFACE ${RAPIDXML_INCLUDE})
# Large blocks of nodes, just below 4 MiB with their header. The same for all that include it.
target_compile_definitions(rapidxml INTERFACE RAPIDXML_DYNAMIC_POOL_SIZE=4194240)

find_path(GZSTREAM_INCLUDE gzstream.h REQUIRED)
find_library(GZSTREAM_LIBRARY gzstream REQUIRED)
add_library(gzstream INTERFACE IMPORTED)
target_include_directories(gzstream SYSTEM INTERFACE ${GZSTREAM_INCLUDE})
target_link_libraries(gzstream INTERFACE ${GZSTREAM_LIBRARY} ZLIB::ZLIB)

find_path(CLI11_INCLUDE CLI/CLI.hpp REQUIRED)
add_library(cli11 INTERFACE IMPORTED)
target_include_directories(cli11 SYSTEM INTERFACE ${CLI11_INCLUDE})

find_path(NLOHMANN_JSON_INCLUDE nlohmann/json.hpp REQUIRED)
add_library(nlohmann_json INTERFACE IMPORTED)
target_include_directories(nlohmann_json SYSTEM INTERFACE ${NLOHMANN_JSON_INCLUDE})

find_path(GRAPHVIZ_INCLUDE graphviz/gvc.h REQUIRED)
find_library(GVC_LIBRARY gvc REQUIRED)
find_library(CGRAPH_LIBRARY cgraph REQUIRED)
add_library(graphviz INTERFACE IMPORTED)
# Its headers include each other without their folder.
target_include_directories(graphviz SYSTEM INTERFACE ${GRAPHVIZ_INCLUDE}
                                                     ${GRAPHVIZ_INCLUDE}/graphviz)
target_link_libraries(graphviz INTERFACE ${GVC_LIBRARY} ${CGRAPH_LIBRARY})

include(${CMAKE_CURRENT_LIST_DIR}/cudd.cmake)
