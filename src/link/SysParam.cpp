#include "link/SysParam.h"

TNetPhone_SysParam &SysParam() {
  static TNetPhone_SysParam live;
  return live;
}

TNetPhone_SysParam &LastSysParam() {
  static TNetPhone_SysParam copy;
  return copy;
}
