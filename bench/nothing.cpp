// The program that a start is measured against: what any program costs on this system.
int main() {}
