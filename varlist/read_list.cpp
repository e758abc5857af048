#include "varlist/read_list.h"

int ReCreatReadVarList(QList<HOST_VAR>*)
{
    return 0;
}
