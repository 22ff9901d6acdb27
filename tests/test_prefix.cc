// Does nothing: other targets use the precompiled header of this one.
// SPDX-License-Identifier: Apache-2.0
int main() {}
