#include "HRB_Thick/HRB_Thick.h"

template class BasicThick<SampleWriter>;
