for (;;) {
    try {
        for (;;) ;
    } catch (e) {
        for (;;) ;
    } finally {
        for (;;) ;
    }
}
