# Calls that wrapped_calls.cpp gates.
function(talvik_wrap_host_calls target)
    foreach(symbol IN ITEMS
            _ZN8CTLVCell5set_iENS_8ETLVTypeEtPKvm
            _ZN8CTLVCell7setCellEtPKcm
            _ZN12CTLVRecordV36appendEPK8CTLVCell
            _ZN12CTLVRecordV35clearEv
            _ZN26CAlarmRepository_Singleton18getAlarmRepositoryEv)
        target_link_options(${target} PRIVATE "-Wl,--wrap=${symbol}")
    endforeach()
endfunction()
