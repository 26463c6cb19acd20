set(VOLUX_RESAMPLE_TESTS
    resample/ResampleTest.cpp
    resample/SampleTest.cpp
)
