# Flags of the WebAssembly build (emcmake cmake ...), for every target. Included before the targets are made.
#
# -msimd128: the vectors that SSE2 gives natively. Exceptions are the programs' last resort and must work, too.
# The programs are ES modules that a worker loads and starts by `callMain`; a fresh instance a run.
# Sizes have 32 bits here; the warnings about them are those of a machine that the sources are not written for.
set(ORBELN_WERROR OFF)
set(ORBELN_WASM_FLAGS -msimd128 -fexceptions)
add_compile_options(${ORBELN_WASM_FLAGS} "SHELL:-include ${CMAKE_CURRENT_LIST_DIR}/compat.h")
add_link_options(${ORBELN_WASM_FLAGS} -sMODULARIZE -sEXPORT_ES6 -sUSE_ES6_IMPORT_META -sENVIRONMENT=worker
                 -sINVOKE_RUN=0 -sEXIT_RUNTIME=1 -sDYNAMIC_EXECUTION=0 -sALLOW_MEMORY_GROWTH -sMAXIMUM_MEMORY=2GB
                 -sABORTING_MALLOC=0 -sTOTAL_STACK=8MB -sFORCE_FILESYSTEM
                 -sEXPORTED_RUNTIME_METHODS=callMain,FS,ENV)
