// The element types that the templates are instantiated for.
#pragma once

#define VOLUX_RESAMPLE_FOR_EACH_ELEMENT_TYPE(DO) \
    DO(unsigned char)                            \
    DO(short)                                    \
    DO(unsigned short)                           \
    DO(int)                                      \
    DO(unsigned int)                             \
    DO(float)                                    \
    DO(double)
