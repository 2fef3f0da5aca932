1 #2
{
	Desc: Z³oty Å‚ ÿ
	FEN: 8/8/8/4k3/8/8/8/3QK3
}
