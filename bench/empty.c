/* A library without imports: what the system charges for loading any library at all. */
int EmptyEntry(void);
int EmptyEntry(void)
{
    return 1;
}
