# Installs the build into a clean prefix and builds and runs the consumer against it, found once by the CMake
# package and once by pkg-config. Needs BUILD_DIR, SOURCE_DIR, WORK_DIR, LIBDIR.
function(run)
    execute_process(COMMAND ${ARGV} COMMAND_ERROR_IS_FATAL ANY)
endfunction()

file(REMOVE_RECURSE ${WORK_DIR})
set(prefix ${WORK_DIR}/prefix)
run(${CMAKE_COMMAND} --install ${BUILD_DIR} --prefix ${prefix})
set(library ${prefix}/${LIBDIR}/libtessera.so)

run(${CMAKE_COMMAND} -S ${SOURCE_DIR} -B ${WORK_DIR}/build -DCMAKE_PREFIX_PATH=${prefix} -DCMAKE_BUILD_TYPE=Release)
run(${CMAKE_COMMAND} --build ${WORK_DIR}/build)
run(${WORK_DIR}/build/consumer ${library})

set(ENV{PKG_CONFIG_PATH} ${prefix}/${LIBDIR}/pkgconfig)
execute_process(COMMAND pkg-config --define-variable=prefix=${prefix} --cflags --libs tessera
                OUTPUT_VARIABLE flags OUTPUT_STRIP_TRAILING_WHITESPACE COMMAND_ERROR_IS_FATAL ANY)
separate_arguments(flags UNIX_COMMAND "${flags}")
run(c++ ${SOURCE_DIR}/main.cpp -o ${WORK_DIR}/consumer_pc ${flags} -ldl -Wl,-rpath,${prefix}/${LIBDIR})
run(${WORK_DIR}/consumer_pc ${library})
