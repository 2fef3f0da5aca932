UTF-8


117 #5 AllSolutions THREADS 4^2 Requires RRk GUICHECK 3
//#TAGS
//#miniature
//!VARIANTS
//!{Main variant} Qd1-d8 Ke5-f5[only move] Qd8-f6
//!ENDVARIANTS
//@SortIndications: 1.Qd1-d8; ~3.Qd8:f6+*
{
	Description: Example
	FEN: 8/8/8/4k3/8/8/8/3QK3
	Answer:  Qd1-d8, 0-0-0, a7-a8Q
}
