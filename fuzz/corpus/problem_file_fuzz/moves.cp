UTF-8
7 SH_KEYLINE(a) SH_DONTLETFIGUREUNBLOCK ( a7, b8 ) SH_SEASNAKE OFF GUICHECK 2
//#TAGS
//#roszada
//!VARIANTS
//!{Wariant główny} 0-0[x ] Ke8-d8+ Rf1-f8++
//!{} a7-a8Q[y]
{
 FEN: 4k3/P7/8/8/8/8/8/4K2R
 Moves: 0-0 Ke8-d7 a7-a8N
}
8
//@SortIndications: ~2.Pa7-a8Q; 0-0, Rh1>f1*++
{ W: Ke1, a7 B: Ke8, b8 Moves: a7:b8H Ke8-e7 Answer: z9-Q7q, Kj1-a1 }
