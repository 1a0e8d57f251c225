function again() {
    try {
        again();
    } finally {
        for (;;) ;
    }
}
again();
