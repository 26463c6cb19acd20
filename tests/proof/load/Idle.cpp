// Does nothing, so that whatever runs is what loading costs.
int main()
{
    return 0;
}
