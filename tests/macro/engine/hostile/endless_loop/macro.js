while (true) ;
