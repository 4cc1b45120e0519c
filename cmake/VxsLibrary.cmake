# The core as an object library, which the tests link as well so that they reach hidden classes, and
# the shared library made of it.

set(vxs_public_headers
    platform/VXExport.h
    src/VXClusterSync.h
    src/VXClusterSyncParams.h
    src/VXExtractParams.h
    src/VXFile.h
    src/VXFileSet.h
    src/VXLandmarkExtract.h
    src/wavfile.h)

add_library(
    vxl_audio_core OBJECT
    src/VXClusterInternal.cpp
    src/VXClusterSync.cpp
    src/VXClusterSyncParams.cpp
    src/VXExtractParams.cpp
    src/VXFile.cpp
    src/VXFileSet.cpp
    src/VXFileSetProcessor.cpp
    src/VXHistogram.cpp
    src/VXHistogramSetProcessor.cpp
    src/VXKeyIndex.cpp
    src/VXKeyProgress.cpp
    src/VXLandmark.cpp
    src/VXLandmarkExtract.cpp
    src/VXMergeStats.cpp
    src/VXMergeStatsSetProcessor.cpp
    src/VXPairCounter.cpp
    src/VXPostingLists.cpp
    src/wavfile.cpp)
set_target_properties(
    vxl_audio_core
    PROPERTIES CXX_EXTENSIONS OFF
               CXX_VISIBILITY_PRESET hidden
               VISIBILITY_INLINES_HIDDEN ON
               POSITION_INDEPENDENT_CODE ON)
target_include_directories(vxl_audio_core PUBLIC src platform)
target_compile_definitions(vxl_audio_core PRIVATE VXS_BUILDING)
target_link_libraries(vxl_audio_core PRIVATE vxs_build_flags)

# Whatever implements the transform goes into the shared library, so it must be position
# independent; a provider that is a file has to be built that way.
if(TARGET ${VXS_TRANSFORM_PROVIDER})
    set_target_properties(${VXS_TRANSFORM_PROVIDER} PROPERTIES POSITION_INDEPENDENT_CODE ON)
elseif(NOT EXISTS ${VXS_TRANSFORM_PROVIDER})
    message(FATAL_ERROR "VXS_TRANSFORM_PROVIDER: ${VXS_TRANSFORM_PROVIDER} is neither a target nor "
                        "a file")
endif()

# Hosts inside this tree see exactly what is installed, under the same include path.
set(vxs_staged_dir ${CMAKE_CURRENT_BINARY_DIR}/include)
set(vxs_staged_headers)
foreach(header IN LISTS vxs_public_headers)
    cmake_path(GET header FILENAME name)
    configure_file(${header} ${vxs_staged_dir}/vxl_audio/${name} COPYONLY)
    list(APPEND vxs_staged_headers ${vxs_staged_dir}/vxl_audio/${name})
endforeach()

add_library(vxl_audio SHARED)
add_library(vxl_audio::vxl_audio ALIAS vxl_audio)
set_target_properties(
    vxl_audio
    PROPERTIES VERSION ${PROJECT_VERSION}
               SOVERSION ${PROJECT_VERSION_MAJOR}
               LINKER_LANGUAGE CXX)
target_compile_features(vxl_audio INTERFACE cxx_std_17)
target_sources(
    vxl_audio PUBLIC FILE_SET HEADERS BASE_DIRS ${vxs_staged_dir} FILES ${vxs_staged_headers})
target_link_libraries(vxl_audio PRIVATE $<BUILD_INTERFACE:vxl_audio_core>
                                        $<BUILD_INTERFACE:${VXS_TRANSFORM_PROVIDER}>)

# Visibility hides the library's own names; instantiations of standard templates over exported types
# would stay visible, and so would a provider that was compiled without it.
if(CMAKE_EXECUTABLE_FORMAT STREQUAL "ELF")
    set(vxs_symbol_map ${CMAKE_CURRENT_SOURCE_DIR}/cmake/vxl_audio.map)
    target_link_options(vxl_audio PRIVATE "LINKER:--version-script=${vxs_symbol_map}")
    set_target_properties(vxl_audio PROPERTIES LINK_DEPENDS ${vxs_symbol_map})
endif()
