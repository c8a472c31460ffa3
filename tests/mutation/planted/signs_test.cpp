int Tested(int number);
int Untested(int number);

int main() {
  // Calls both, but looks at the answers of one of them only.
  Untested(-3);
  Untested(3);
  return Tested(-3) == -1 && Tested(3) == 1 ? 0 : 1;
}
