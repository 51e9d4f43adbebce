#pragma once
// The bend of a slot's feedback signal: above 1 in size it goes towards 1.5,
// 1 + 0.5 (v - 1) / v, which keeps even 160 % feedback bounded. Below it passes untouched.

// Bends one block (gBlockLen samples) in place; a NaN passes as it is.
void FeedbackSoftLimit(double* block);
