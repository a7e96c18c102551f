#pragma once
// The proposed selling price of a disposition for the host, with no screen:
// the time and the external work of the disposition at cost and at value, the
// minimum margin, the rounding and the band of the tariff.
namespace prestkt {

// 0 when nothing was done on the disposition. Reads private copies of the
// model's working set: the globals of an open card stay untouched.
double CalcDatiDisp(int cProject, int cDisp);

}  // namespace prestkt
