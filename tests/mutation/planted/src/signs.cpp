int Tested(int number) {
  if (number < 0) return -1;
  return 1;
}

int Untested(int number) {
  if (number > 0) return 1;
  return -1;
}
